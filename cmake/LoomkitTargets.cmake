# What all targets of the project have in common: the language, the warnings, where the results go.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

find_program(LOOMKIT_CCACHE ccache)
if(LOOMKIT_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${LOOMKIT_CCACHE}")
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Werror)

# Tables of addresses are filled and closed before any code runs. The natives look for one another in their own folder
# first: RPATH, which LD_LIBRARY_PATH comes after, not RUNPATH.
add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack LINKER:--disable-new-dtags)

# For a folder's targets: add_compile_options(${LOOMKIT_PROTECTION}).
include("${CMAKE_CURRENT_LIST_DIR}/LoomkitProtection.cmake")

# loomkit_object_library(NAME DEPENDS target... SOURCES file...)
#
# One library of the platform: its objects, which end up in libkrt.so and in the platform tests, and its public
# headers in include/.
function(loomkit_object_library name)
    cmake_parse_arguments(ARG "" "" "DEPENDS;SOURCES" ${ARGN})
    add_library(${name} OBJECT ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC include)
    target_link_libraries(${name} PUBLIC ${ARG_DEPENDS})
endfunction()
