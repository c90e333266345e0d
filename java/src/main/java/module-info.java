/**
 * Calls native numeric components from Java with plain Java data.
 *
 * <p>Start with {@link com.norvane.toolbox.loomkit.Component}; values that never touch native memory are in
 * {@code com.norvane.extern.java}.
 */
module com.norvane.loomkit {
    exports com.norvane.toolbox.loomkit;
    exports com.norvane.extern.java;
}
