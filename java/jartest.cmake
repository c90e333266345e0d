# cmake -Djava=… -Djar=… -Dhome=… -P jartest.cmake
#
# Runs Java on the jar alone, as a module and from the class path, with a home folder that is empty at first: the
# natives must come out of the jar, once.

file(REMOVE_RECURSE "${home}")
file(MAKE_DIRECTORY "${home}")
file(WRITE "${home}/Use.java" "
import com.norvane.toolbox.loomkit.*;
public class Use {
    public static void main(String[] args) {
        try (NVNumericArray three = NVNumericArray.of(new double[][] {{1, 2}})) {
            System.out.println(\"sum \" + (three.getDouble(1, 1) + three.getDouble(1, 2)));
        }
    }
}
")
foreach(options IN ITEMS "-cp;${jar}" "-p;${jar};--add-modules;com.norvane.loomkit")
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -E env --unset=XDG_CACHE_HOME "${java}" "-Duser.home=${home}" ${options} "${home}/Use.java"
        OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE result)
    if(NOT result EQUAL 0 OR NOT output STREQUAL "sum 3.0\n")
        message(FATAL_ERROR "With ${options}: ${result}\n${output}${errors}")
    endif()
endforeach()
file(GLOB unpacked "${home}/.cache/loomkit/natives/*")
list(LENGTH unpacked count)
if(NOT count EQUAL 1)
    message(FATAL_ERROR "Expected one unpacked folder, found: ${unpacked}")
endif()
