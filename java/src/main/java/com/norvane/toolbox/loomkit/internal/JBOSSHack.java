package com.norvane.toolbox.loomkit.internal;

/**
 * Loads the runtime's Java integration into the class loader that this class lives in, so that it also works where
 * the application has class loaders of its own. The runtime finds this class and its method by name.
 */
public final class JBOSSHack {
    static {
        NativeLoader.load();
    }

    private JBOSSHack() {}

    static native Class<?> loadOJI(String classPath, String libraryPath, Object classLoader);

    /**
     * Called by the runtime, once, when it first needs a Java object.
     *
     * @return the integration class
     */
    public static Class<?> callLoadOJI(String classPath, String libraryPath) {
        return loadOJI(classPath, libraryPath, JBOSSHack.class.getClassLoader());
    }
}
