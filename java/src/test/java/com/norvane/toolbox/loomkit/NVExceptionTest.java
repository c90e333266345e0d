package com.norvane.toolbox.loomkit;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;

import java.util.List;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class NVExceptionTest {
    @ParameterizedTest
    @CsvSource(
            delimiter = '|',
            value = {
                "at innermost (failing.cpp:12)   | native.innermost(failing.cpp:12)",
                "at fail_deep                    | native.fail_deep(Unknown Source)",
                "solve (a b.cpp:3)               | native.solve(a b.cpp:3)",
                "at f (x.cpp:99999999999)        | native.f(x.cpp)",
            })
    void showsANativeLineAsAFrame(String line, String frame) {
        NVException failure = new NVException("failed", new String[] {line}, 1);

        assertEquals(frame, failure.getStackTrace()[0].toString());
        assertEquals(List.of(line), failure.getNativeStack());
        assertEquals("", failure.getIdentifier());
    }

    @Test
    void putsNativeFramesInFrontOfJavaFrames() {
        String[] lines = {"at a (f.cpp:1)", "at b (f.cpp:2)", "identifier solver:diverged", "not counted"};
        NVException failure = new NVException("failed", lines, 3);
        StackTraceElement[] trace = failure.getStackTrace();

        assertEquals("a", trace[0].getMethodName());
        assertEquals("b", trace[1].getMethodName());
        assertEquals(NVExceptionTest.class.getName(), trace[2].getClassName());
        assertEquals(List.of(lines[0], lines[1]), failure.getNativeStack());
        assertEquals("solver:diverged", failure.getIdentifier());
        assertThrows(UnsupportedOperationException.class, () -> failure.getNativeStack().add("c"));
    }
}
