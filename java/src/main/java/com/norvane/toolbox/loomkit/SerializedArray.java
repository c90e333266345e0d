package com.norvane.toolbox.loomkit;

import java.io.InvalidObjectException;
import java.io.Serializable;

/** What stands for an array in a Java object stream. */
final class SerializedArray implements Serializable {
    private static final long serialVersionUID = 1L;

    /** The serialised form, as {@link NVBuiltinArray#serialize} gives it. */
    private final byte[] form;

    SerializedArray(byte[] form) {
        this.form = form;
    }

    private Object readResolve() throws InvalidObjectException {
        if (form == null) {
            throw new InvalidObjectException("an array without its serialised form");
        }
        try {
            return NVBuiltinArray.deserialize(form);
        } catch (IllegalArgumentException refused) {
            InvalidObjectException failure = new InvalidObjectException(refused.getMessage());
            failure.initCause(refused);
            throw failure;
        }
    }
}
