import com.velotrix.quiverleaf.sdk.Calibration;
import com.velotrix.quiverleaf.sdk.NativeLibrary;

/** What somebody else's Java program does with the installed jar. */
final class Consumer {
  public static void main(String[] arguments) {
    NativeLibrary.load();
    int id = Calibration.nNewCalibrator(4, 11, 0.02f, 0, 640, 480);
    System.out.println(Calibration.nGetVersion() + " " + Calibration.nGetStatus(id));
    Calibration.nDeleteCalibrator(id);
  }
}
