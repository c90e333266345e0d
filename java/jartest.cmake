# cmake -Druntime=… -Djdk=… -Djar=… -Dhome=… -P jartest.cmake
#
# Runs the Java in the folder `runtime` on the jar alone, with a home folder that is empty at first: the natives must come
# out of the jar, once. The folder `jdk` compiles the program that uses the jar.

file(REMOVE_RECURSE "${home}")
file(MAKE_DIRECTORY "${home}")
file(WRITE "${home}/Use.java" "
package program;
import com.norvane.toolbox.loomkit.*;
public class Use {
    public static void main(String[] args) {
        try (NVNumericArray three = NVNumericArray.of(new double[][] {{1, 2}})) {
            System.out.println(\"sum \" + (three.getDouble(1, 1) + three.getDouble(1, 2)));
        }
    }
}
")
# A program with all that it needs in one jar keeps the manifest of this one.
set(program "${home}/program.jar")
file(COPY_FILE "${jar}" "${program}")
execute_process(COMMAND "${jdk}/bin/javac" --release 11 -cp "${jar}" -d "${home}" "${home}/Use.java"
    COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${jdk}/bin/jar" --update --file "${program}" --main-class program.Use -C "${home}" program
    COMMAND_ERROR_IS_FATAL ANY)

function(expect_sum)
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -E env --unset=XDG_CACHE_HOME "${runtime}/bin/java" "-Duser.home=${home}" ${ARGN}
        OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE result)
    if(NOT result EQUAL 0 OR NOT output STREQUAL "sum 3.0\n")
        message(FATAL_ERROR "With ${ARGN}: ${result}\n${output}${errors}")
    endif()
endfunction()

set(on_class_path -cp "${jar}:${home}" program.Use)
set(as_module -p "${jar}" -cp "${home}" --add-modules com.norvane.loomkit program.Use)
expect_sum(${on_class_path})
expect_sum(${as_module})
# From Java 24 on, native code can be forbidden to all but whom an option or the program's own jar names.
set(forbidden --illegal-native-access=deny)
execute_process(COMMAND "${runtime}/bin/java" ${forbidden} -version RESULT_VARIABLE unknown OUTPUT_QUIET ERROR_QUIET)
if(unknown EQUAL 0)
    expect_sum(${forbidden} --enable-native-access=ALL-UNNAMED ${on_class_path})
    expect_sum(${forbidden} --enable-native-access=com.norvane.loomkit ${as_module})
    expect_sum(${forbidden} -jar "${program}")
endif()

file(GLOB unpacked "${home}/.cache/loomkit/natives/*")
list(LENGTH unpacked count)
if(NOT count EQUAL 1)
    message(FATAL_ERROR "Expected one unpacked folder, found: ${unpacked}")
endif()
