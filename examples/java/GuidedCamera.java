import com.velotrix.quiverleaf.sdk.CalibrationResult;
import com.velotrix.quiverleaf.sdk.Calibrator;
import com.velotrix.quiverleaf.sdk.Verdict;
import java.nio.file.Path;
import java.time.Duration;

/** Calibrates a camera with the pose assistant: GuidedCamera VIDEO POSES, writes camera.json. */
public class GuidedCamera {
  public static void main(String[] arguments) throws Exception {
    String video = arguments[0];
    Path poses = Path.of(arguments[1]);
    try (Calibrator calibrator = Calibrator.builder().hdist(0.2).frameSize(640, 480).build()) {
      calibrator.onFrames(frame -> System.out.println(frame.jpeg().length + " bytes, " + frame.status()));
      calibrator.startAssistant(poses);
      if (!calibrator.openContent(video)) { // or openCamera(0, 640, 480, 30)
        throw new IllegalArgumentException(video + " cannot be opened");
      }
      CalibrationResult result = calibrator.awaitResult(Duration.ofMinutes(5));
      calibrator.closeSource();
      System.out.println(result.cameraMatrix() + "\nRMS " + result.rms() + " px");
      Verdict verdict = calibrator.verdict();
      System.out.println("Verdict: " + verdict);
      if (verdict.grade() != Verdict.Grade.WORTHLESS) {
        calibrator.save(Path.of("camera.json"));
      }
    }
  }
}
