# cmake -Dfolder=… -Dfiles=… -P bundle.cmake
#
# Copies libraries into a folder and writes the list of their SHA-256 digests beside them.

file(REMOVE_RECURSE "${folder}")
file(MAKE_DIRECTORY "${folder}")
set(list "")
foreach(file IN LISTS files)
    file(COPY "${file}" DESTINATION "${folder}" FOLLOW_SYMLINK_CHAIN)
    get_filename_component(name "${file}" NAME)
    file(SHA256 "${folder}/${name}" digest)
    string(APPEND list "${digest}  ${name}\n")
endforeach()
file(WRITE "${folder}/natives.sha256" "${list}")
