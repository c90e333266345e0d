package com.norvane.toolbox.loomkit.internal;

import java.lang.reflect.InvocationTargetException;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.util.ArrayDeque;
import java.util.Deque;
import java.util.LinkedHashSet;
import java.util.Objects;
import java.util.Set;

/** Calls methods of Java objects for components, which know values as {@code Double}, {@code String} and the like. */
public final class ObjectInvoker {
    private ObjectInvoker() {}

    /**
     * Calls a public method, found by its name and number of arguments among those of the object's class and
     * interfaces. Of several, the first whose parameters the arguments can be converted to is taken, classes before
     * interfaces. Called from native code.
     *
     * @param target the object
     * @param method name of the method
     * @param arguments values, or null for none
     * @return what the method gives; null for void
     * @throws NoSuchMethodException when no such method can be called with these arguments
     * @throws Throwable what the method throws, as it is
     */
    public static Object invoke(Object target, String method, Object[] arguments) throws Throwable {
        Objects.requireNonNull(target, "target");
        Object[] given = arguments == null ? new Object[0] : arguments;
        for (Class<?> type : typesOf(target.getClass())) {
            for (Method candidate : type.getMethods()) {
                if (!fits(candidate, method, given.length)) {
                    continue;
                }
                Object[] converted = convertAll(given, candidate.getParameterTypes());
                if (converted != null && isCallable(candidate, target)) {
                    return call(candidate, target, converted);
                }
            }
        }
        throw new NoSuchMethodException(
                target.getClass().getName()
                        + " has no public method "
                        + method
                        + " that takes "
                        + given.length
                        + " arguments of these types");
    }

    private static Object call(Method method, Object target, Object[] arguments) throws Throwable {
        try {
            return method.invoke(target, arguments);
        } catch (InvocationTargetException wrapper) {
            throw wrapper.getCause();
        }
    }

    private static boolean fits(Method candidate, String name, int count) {
        return candidate.getName().equals(name)
                && candidate.getParameterCount() == count
                && !Modifier.isStatic(candidate.getModifiers());
    }

    /** A method of a class that is hidden from here may still be callable through an interface. */
    private static boolean isCallable(Method method, Object target) {
        return method.canAccess(target) || method.trySetAccessible();
    }

    /** The class, its superclasses, then all interfaces. */
    private static Set<Class<?>> typesOf(Class<?> start) {
        Set<Class<?>> types = new LinkedHashSet<>();
        Deque<Class<?>> interfaces = new ArrayDeque<>();
        for (Class<?> type = start; type != null; type = type.getSuperclass()) {
            types.add(type);
            interfaces.addAll(Set.of(type.getInterfaces()));
        }
        while (!interfaces.isEmpty()) {
            Class<?> type = interfaces.remove();
            types.add(type);
            interfaces.addAll(Set.of(type.getInterfaces()));
        }
        return types;
    }

    /** Null when one of them can't be converted. */
    private static Object[] convertAll(Object[] arguments, Class<?>[] types) {
        Object[] converted = new Object[arguments.length];
        for (int i = 0; i < arguments.length; i++) {
            if (arguments[i] == null) {
                if (types[i].isPrimitive()) {
                    return null;
                }
                continue;
            }
            converted[i] = convert(arguments[i], types[i]);
            if (converted[i] == null) {
                return null;
            }
        }
        return converted;
    }

    /** A value as a parameter takes it, or null when it can't. */
    private static Object convert(Object value, Class<?> type) {
        if (type.isInstance(value) || (type == boolean.class && value instanceof Boolean)) {
            return value;
        }
        if (value instanceof Double) {
            return convertNumber((Double) value, type);
        }
        if (value instanceof double[] && type == double[][].class) {
            return new double[][] {(double[]) value};
        }
        boolean oneUnit = value instanceof String && ((String) value).length() == 1;
        return oneUnit && (type == char.class || type == Character.class) ? ((String) value).charAt(0) : null;
    }

    /** Integers take whole numbers only; an array takes a number as its one element. */
    private static Object convertNumber(double value, Class<?> type) {
        if (type == double.class) {
            return value;
        }
        if (type == float.class || type == Float.class) {
            return (float) value;
        }
        if (type == double[].class) {
            return new double[] {value};
        }
        if (type == double[][].class) {
            return new double[][] {{value}};
        }
        if (type == boolean.class || type == Boolean.class) {
            return null;
        }
        return value == Math.rint(value) ? convertWhole(value, type) : null;
    }

    private static Object convertWhole(double value, Class<?> type) {
        if ((type == long.class || type == Long.class) && (long) value == value) {
            return (long) value;
        }
        if ((type == int.class || type == Integer.class) && (int) value == value) {
            return (int) value;
        }
        if ((type == short.class || type == Short.class) && (short) value == value) {
            return (short) value;
        }
        if ((type == byte.class || type == Byte.class) && (byte) value == value) {
            return (byte) value;
        }
        return null;
    }
}
