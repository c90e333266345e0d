# The JUnit tests. They run on the class path, to see what the packages keep to themselves.

find_jar(LOOMKIT_JUNIT_JAR junit-platform-console-standalone)
if(NOT LOOMKIT_JUNIT_JAR)
    message(FATAL_ERROR "The Java tests need junit-platform-console-standalone.jar (Debian package junit5)")
endif()

# What a sanitizer needs: to be loaded before the virtual machine, together with the library whose exceptions it
# watches; to leave the machine its own use of signals; and not to count what the machine never frees.
set(java_environment "")
if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=address")
    foreach(library IN ITEMS libasan.so libstdc++.so)
        execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${library}
            OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
        list(APPEND preloaded "${path}")
    endforeach()
    list(JOIN preloaded " " preloaded)
    set(java_environment "LD_PRELOAD=${preloaded}" "ASAN_OPTIONS=handle_segv=0:detect_leaks=0")
endif()

set(package src/test/java/com/norvane)
add_jar(loomkit_java_tests
    SOURCES
        ${package}/extern/java/ValuesTest.java
        ${package}/toolbox/loomkit/ArrayLifeTest.java
        ${package}/toolbox/loomkit/CallTest.java
        ${package}/toolbox/loomkit/CellAndStructTest.java
        ${package}/toolbox/loomkit/ClassLoaderTest.java
        ${package}/toolbox/loomkit/ComponentLifeTest.java
        ${package}/toolbox/loomkit/DescriptionTest.java
        ${package}/toolbox/loomkit/ElementsTest.java
        ${package}/toolbox/loomkit/GuideTest.java
        ${package}/toolbox/loomkit/HostileInputTest.java
        ${package}/toolbox/loomkit/JavaDataTest.java
        ${package}/toolbox/loomkit/LowMemoryTest.java
        ${package}/toolbox/loomkit/PrintingTest.java
        ${package}/toolbox/loomkit/PublicApi.java
        ${package}/toolbox/loomkit/SerialFormTest.java
        ${package}/toolbox/loomkit/StackEndTest.java
        ${package}/toolbox/loomkit/TestComponents.java
        ${package}/toolbox/loomkit/internal/NativeBundleTest.java
        ${package}/toolbox/loomkit/internal/NativeLoaderTest.java
        ${package}/toolbox/loomkit/internal/ObjectInvokerTest.java
        ${package}/toolbox/loomkit/testing/ChildProcess.java
        ${package}/toolbox/loomkit/testing/Together.java
    INCLUDE_JARS loomkit_classes "${LOOMKIT_JUNIT_JAR}")
get_target_property(loomkit_java_tests_jar loomkit_java_tests JAR_FILE)

add_test(NAME java_tests
    COMMAND "${Java_JAVA_EXECUTABLE}" -Xcheck:jni -ea
        "-Dloomkit.native.dir=${CMAKE_BINARY_DIR}/lib"
        "-Dloomkit.test.components=${CMAKE_BINARY_DIR}/components"
        "-Dloomkit.test.guide=${PROJECT_SOURCE_DIR}/docs/guide.md"
        -cp "${loomkit_classes_jar}:${loomkit_java_tests_jar}:${LOOMKIT_JUNIT_JAR}"
        org.junit.platform.console.ConsoleLauncher
        --scan-classpath "${loomkit_java_tests_jar}" --fail-if-no-tests --disable-banner --details=tree)
# What the check of JNI calls has to say is a failure, except for its word on the number of local references.
set_tests_properties(java_tests PROPERTIES
    ENVIRONMENT "${java_environment}"
    FAIL_REGULAR_EXPRESSION "WARNING in native method;FATAL ERROR in native method")

# From the jar alone, as users have it, with each Java of this machine. The sanitizers watch the build's own.
set(runtimes "${Java_JAVA_EXECUTABLE}")
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    file(GLOB installed /usr/lib/jvm/*/bin/java)
    list(APPEND runtimes ${installed})
endif()
list(TRANSFORM runtimes REPLACE "/bin/java$" "")
foreach(runtime IN LISTS runtimes)
    file(REAL_PATH "${runtime}" runtime)
    cmake_path(GET runtime FILENAME name)
    if(NOT TEST "jar_test_${name}" AND EXISTS "${runtime}/bin/java")
        add_test(NAME "jar_test_${name}"
            COMMAND "${CMAKE_COMMAND}" "-Druntime=${runtime}" "-Djdk=${loomkit_jdk}" "-Djar=${loomkit_jar_file}"
                "-Dhome=${CMAKE_CURRENT_BINARY_DIR}/home/${name}" -P "${CMAKE_CURRENT_SOURCE_DIR}/jartest.cmake")
        set_tests_properties("jar_test_${name}" PROPERTIES ENVIRONMENT "${java_environment}")
    endif()
endforeach()
