#!/usr/bin/env bash
# package.sh HOST_BUILD: makes build/package/loomkit.jar, the jar that runs on every Linux of this processor since 2020.
#
# Its classes come from HOST_BUILD, where the target loomkit_classes has been built. Its natives are compiled in a root
# of Debian 11, so that they ask for no newer C and C++ runtime than that has. The example component linalg comes out
# beside the jar, as the shared object liblinalg would be: build/package/natives/PLATFORM/linalg.so.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
project=$(cd "$here/../.." && pwd)
package=$project/build/package
host_build=$1
. "$here/roots.sh"

# The newest versions of symbols in Debian 11.
oldest=(GLIBC_2.31 GLIBCXX_3.4.28 CXXABI_1.3.12)
libraries=(libloomkit.so libnativevrl.so libkrt.so)
packages=cmake,g++,libboost-dev,libfmt-dev,libsodium-dev,libxxhash-dev,ninja-build,nlohmann-json3-dev,openjdk-17-jdk-headless,zlib1g-dev

# Eigen is headers alone; the example component wants newer ones than Debian 11 has, so it gets this machine's.
add_eigen() { # ROOT
    [ -d /usr/include/eigen3 ] || die "the example component needs the Debian package libeigen3-dev"
    mkdir -p "$1/usr/share/eigen3"
    cp -r --no-clobber /usr/include/eigen3 "$1/usr/include/"
    cp -r --no-clobber /usr/share/eigen3/cmake "$1/usr/share/eigen3/"
}

compile_natives() { # ROOT
    in_root "$1" "$project" /source sh -ec '
        cmake -S /source -B /build -G Ninja -DCMAKE_BUILD_TYPE=Release -DLOOMKIT_NATIVES_ONLY=ON
        cmake --build /build --target loomkit_loader component_linalg_library' >"$package/build.log" 2>&1 || {
        tail -n 40 "$package/build.log" >&2
        die "the natives could not be built in Debian 11; the details are in $package/build.log"
    }
}

make_jar() { # NATIVES PLATFORM
    local bundle=$package/bundle
    rm -rf "$bundle"
    cmake "-Dfolder=$bundle/natives/$2" "-Dfiles=$(IFS=';' && echo "${libraries[*]/#/$1/}")" \
        -P "$project/java/bundle.cmake"
    cp "$host_build/java/loomkit-classes.jar" "$package/loomkit.jar.part"
    "${JAVA_HOME:?}/bin/jar" --update --file "$package/loomkit.jar.part" -C "$bundle" natives
    mv "$package/loomkit.jar.part" "$package/loomkit.jar"
}

reason=$(roots_are_possible) || die "$reason"
platform=linux-$(uname -m)
root=$package/root-debian11-$(dpkg --print-architecture)
natives=$package/natives/$platform
reason=$(make_root "$root" bullseye apt "$packages") || die "$reason"
add_eigen "$root"
compile_natives "$root"
mkdir -p "$natives"
cp "${libraries[@]/#/$root/build/lib/}" "$root/build/components/linalg.lib/linalg.so" "$natives/"
/usr/bin/python3 "$project/tests/natives/check_natives.py" "${libraries[@]/#/$natives/}" "$natives/linalg.so" \
    --guarded --fortified --oldest "${oldest[@]}"
make_jar "$natives" "$platform"
