# Configures the project once more, with LOOMKIT_PLATFORM set to a folder, and compares its targets with those of the
# build at hand. Needs: source, build (configured), platform (the folder), scratch (a folder of the test's own).

# The names of the targets of a build, sorted, free of the build's own path.
function(read_targets folder result)
    execute_process(COMMAND "${CMAKE_COMMAND}" --build "${folder}" --target help
        OUTPUT_VARIABLE listed COMMAND_ERROR_IS_FATAL ANY)
    string(REPLACE "${folder}" "" listed "${listed}")
    string(REGEX MATCHALL "[^\n]+: phony" targets "${listed}")
    list(SORT targets)
    set(${result} "${targets}" PARENT_SCOPE)
endfunction()

load_cache("${build}" READ_WITH_PREFIX own_
    CMAKE_BUILD_TYPE CMAKE_CXX_COMPILER CMAKE_C_COMPILER CMAKE_CXX_FLAGS CMAKE_C_FLAGS CMAKE_GENERATOR BUILD_TESTING)
file(REMOVE_RECURSE "${scratch}")
execute_process(
    COMMAND "${CMAKE_COMMAND}" -S "${source}" -B "${scratch}" -G "${own_CMAKE_GENERATOR}"
        "-DLOOMKIT_PLATFORM=${platform}"
        "-DCMAKE_BUILD_TYPE=${own_CMAKE_BUILD_TYPE}" "-DBUILD_TESTING=${own_BUILD_TESTING}"
        "-DCMAKE_CXX_COMPILER=${own_CMAKE_CXX_COMPILER}" "-DCMAKE_C_COMPILER=${own_CMAKE_C_COMPILER}"
        "-DCMAKE_CXX_FLAGS=${own_CMAKE_CXX_FLAGS}" "-DCMAKE_C_FLAGS=${own_CMAKE_C_FLAGS}"
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

read_targets("${build}" expected)
read_targets("${scratch}" found)
foreach(target IN ITEMS krt nativevrl library_tests loomkit_bench)
    if(NOT "${expected}" MATCHES "${target}: phony")
        message(FATAL_ERROR "The build at hand has no target ${target}: nothing can be compared with it.")
    endif()
endforeach()
if(NOT found STREQUAL expected)
    set(missing ${expected})
    list(REMOVE_ITEM missing ${found})
    list(REMOVE_ITEM found ${expected})
    message(FATAL_ERROR "Other targets with the platform as a folder. Missing: ${missing}. Added: ${found}.")
endif()
