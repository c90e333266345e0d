package com.norvane.toolbox.loomkit.testing;

/** Stands in for the class through which the runtime loads its Java integration. */
public final class LoaderStandIn {
    /** What the last call was given. */
    public static String seen = "";

    private LoaderStandIn() {}

    /** Fails for the class path "fail". */
    public static Class<?> callLoadOJI(String classPath, String libraryPath) {
        seen = classPath + "|" + libraryPath;
        if (classPath.equals("fail")) {
            throw new IllegalStateException("nothing to load");
        }
        return StringBuilder.class;
    }
}
