import com.norvane.toolbox.loomkit.Component;
import com.norvane.toolbox.loomkit.Loomkit;
import com.norvane.toolbox.loomkit.NVArray;
import com.norvane.toolbox.loomkit.NVCellArray;
import com.norvane.toolbox.loomkit.NVException;
import com.norvane.toolbox.loomkit.NVNumericArray;
import com.norvane.toolbox.loomkit.NVStructArray;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.InputStream;
import java.io.PrintStream;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.function.DoubleUnaryOperator;

/**
 * Calls native functions from Java. Arguments: the file longley.csv, and the folder with the component archives.
 *
 * <p>Ends with status 1 when the regression is not as precise as it should be.
 */
public final class Demo {
    /** Certified coefficients of the Longley regression, the constant first. */
    private static final double[] CERTIFIED = {
        -3482258.63459582,
        15.0618722713733,
        -0.0358191792925910,
        -2.02022980381683,
        -1.03322686717359,
        -0.0511041056535807,
        1829.15146461355
    };

    private static final double MAX_RELATIVE_ERROR = 1e-8;

    private Demo() {}

    public static void main(String[] args) throws IOException {
        Path data = Path.of(args[0]);
        Path components = Path.of(args[1]);
        Loomkit.start();
        boolean precise;
        try (Component linalg = openStream(components.resolve("linalg.kpa"));
                Component showcase = Component.open(components.resolve("showcase.kpa"))) {
            precise = regression(linalg, data);
            matrices(linalg);
            cellsAndStructs(showcase);
            printing(showcase);
            minimisation(showcase);
            failure(showcase);
        } finally {
            Loomkit.stop();
        }
        System.exit(precise ? 0 : 1);
    }

    private static Component openStream(Path archive) throws IOException {
        try (InputStream stream = Files.newInputStream(archive)) {
            return Component.open(stream);
        }
    }

    private static boolean regression(Component linalg, Path data) throws IOException {
        List<String> lines = Files.readAllLines(data);
        int count = lines.size() - 1;
        double[][] regressors = new double[count][];
        double[][] employed = new double[count][1];
        for (int i = 0; i < count; i++) {
            double[] row = Arrays.stream(lines.get(i + 1).split(",")).mapToDouble(Double::parseDouble).toArray();
            employed[i][0] = row[0];
            regressors[i] = row.clone();
            regressors[i][0] = 1;
        }
        double[] coefficients;
        try (NVArray result = linalg.call1("lstsq", regressors, employed)) {
            coefficients = result.asNumeric().toFlatDoubleArray();
        }
        return compare(coefficients);
    }

    private static boolean compare(double[] coefficients) {
        System.out.println("Longley regression, " + coefficients.length + " coefficients");
        System.out.printf("  %-4s%24s%24s%12s%n", "", "computed", "certified", "rel. error");
        boolean precise = coefficients.length == CERTIFIED.length;
        for (int i = 0; i < coefficients.length && i < CERTIFIED.length; i++) {
            double error = Math.abs(coefficients[i] - CERTIFIED[i]) / Math.abs(CERTIFIED[i]);
            System.out.printf("  b%-3d%24.15g%24.15g%12.1e%n", i, coefficients[i], CERTIFIED[i], error);
            precise &= error < MAX_RELATIVE_ERROR;
        }
        System.out.println(precise ? "  as precise as required" : "  NOT as precise as required");
        return precise;
    }

    private static void matrices(Component linalg) {
        double[][] a = {{4, 1, 0}, {1, 3, 1}, {0, 1, 2}};
        try (NVArray inverse = linalg.call1("inv", (Object) a);
                NVArray back = linalg.call1("inv", inverse)) {
            System.out.println("\nA matrix, inverted twice");
            System.out.println(back);
            double[][] rows = back.asNumeric().toDoubleArray();
            System.out.printf("  element (2, 3) as a Java double: %.12f%n", rows[1][2]);
        }
    }

    private static void cellsAndStructs(Component showcase) {
        System.out.println("\nA cell, reversed by a component function");
        try (NVCellArray cell = NVCellArray.row("first", new double[] {1, 2, 3}, true);
                NVArray reversed = showcase.call1("reverse", cell)) {
            System.out.println(reversed);
        }
        Map<String, Object> fields = new LinkedHashMap<>();
        fields.put("name", "Longley");
        fields.put("observations", 16);
        System.out.println("\nA struct, with a field renamed");
        try (NVStructArray struct = NVStructArray.of(fields);
                NVArray renamed = showcase.call1("rename", struct, "name", "author")) {
            System.out.println(renamed);
        }
    }

    private static void printing(Component showcase) {
        ByteArrayOutputStream bytes = new ByteArrayOutputStream();
        showcase.setOutput(new PrintStream(bytes, true, StandardCharsets.UTF_8));
        showcase.call("say", 0, "hello from native code");
        showcase.setOutput(System.out);
        System.out.println("\nPrinted by a component: " + bytes.toString(StandardCharsets.UTF_8).trim());
    }

    private static void minimisation(Component showcase) {
        DoubleUnaryOperator objective = x -> Math.pow(x - 2, 4) + Math.cosh(x - 2);
        NVArray[] minimum = showcase.call("minimize", 3, objective, -5.0, 10.0);
        try (NVNumericArray x = minimum[0].asNumeric();
                NVNumericArray value = minimum[1].asNumeric();
                NVNumericArray evaluations = minimum[2].asNumeric()) {
            System.out.printf(
                    "%nMinimum of a Java lambda: %.6f at %.6f after %.0f evaluations%n",
                    value.doubleValue(), x.doubleValue(), evaluations.doubleValue());
        }
    }

    private static void failure(Component showcase) {
        try {
            showcase.call("fail_deep", 1, "this was asked for");
        } catch (NVException failure) {
            System.out.println("\nA failure: " + failure.getMessage());
            failure.getNativeStack().forEach(line -> System.out.println("  " + line));
        }
    }
}
