package com.norvane.toolbox.loomkit;

import java.util.Objects;

/**
 * A Java object that a component function gets or gives as such. {@link Component#call} wraps by itself what is no
 * plain data; wrap by hand what is, to have it passed as an object.
 */
public final class NVJavaObjectRef extends NVArray {
    private final Object object;

    /**
     * Refers to an object.
     *
     * @param object the object, not null
     */
    public NVJavaObjectRef(Object object) {
        this.object = Objects.requireNonNull(object, "object");
    }

    /**
     * The object referred to.
     *
     * @return the object, never null
     */
    public Object get() {
        return object;
    }

    @Override
    public String toString() {
        return object.toString();
    }
}
