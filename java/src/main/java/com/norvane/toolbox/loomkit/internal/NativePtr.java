package com.norvane.toolbox.loomkit.internal;

/**
 * A native address: of an array, or of a component instance.
 *
 * <p>It owns nothing. Who made the address is responsible for giving it back, once.
 */
public final class NativePtr {
    private final long address;

    public NativePtr(long address) {
        this.address = address;
    }

    /** The address; 0 stands for none. Called from native code. */
    public long get() {
        return address;
    }

    @Override
    public String toString() {
        return "0x" + Long.toHexString(address);
    }
}
