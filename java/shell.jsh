import com.norvane.toolbox.loomkit.*
import java.nio.file.*

/** Opens one of the example components: open("linalg"). */
Component open(String name) throws java.io.IOException {
    return Component.open(Path.of(System.getProperty("loomkit.components"), name + ".kpa"));
}
System.out.println("loomkit " + Loomkit.version() + ". Try: open(\"linalg\").call1(\"norm\", new double[] {3, 4})")
