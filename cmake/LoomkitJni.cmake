# JNI::JNI, the headers, and JNI::JVM, the virtual machine too, of the JDK whose compiler was found. FindJNI looks in a
# fixed list of folders, and has no targets before CMake 3.24.
get_filename_component(loomkit_jdk "${Java_JAVAC_EXECUTABLE}" REALPATH)
get_filename_component(loomkit_jdk "${loomkit_jdk}/../.." ABSOLUTE)
set(loomkit_jni_headers "${loomkit_jdk}/include")
set(loomkit_jvm "${loomkit_jdk}/lib/server/libjvm.so")
foreach(file IN ITEMS "${loomkit_jni_headers}/jni.h" "${loomkit_jvm}")
    if(NOT EXISTS "${file}")
        message(FATAL_ERROR "The JDK of ${Java_JAVAC_EXECUTABLE} has no ${file}")
    endif()
endforeach()

add_library(JNI::JNI INTERFACE IMPORTED)
target_include_directories(JNI::JNI INTERFACE "${loomkit_jni_headers}" "${loomkit_jni_headers}/linux")
add_library(JNI::JVM SHARED IMPORTED)
set_target_properties(JNI::JVM PROPERTIES IMPORTED_LOCATION "${loomkit_jvm}")
target_link_libraries(JNI::JVM INTERFACE JNI::JNI)
