import com.velotrix.quiverleaf.sdk.CalibrationResult;
import com.velotrix.quiverleaf.sdk.Matrix;
import java.awt.image.BufferedImage;
import java.io.File;
import java.nio.file.Path;
import java.util.Arrays;
import javax.imageio.ImageIO;

/**
 * Straightens a picture with a result file: Undistort RESULT.json PICTURE STRAIGHTENED.png
 *
 * <p>The picture has to be of the size that the camera was calibrated at. An EXIF orientation is not obeyed:
 * ImageIO leaves it alone, and the result describes the sensor. Neither the engine nor OpenCV is
 * needed: the model is the one in docs/conventions.md.
 */
public class Undistort {
  private final double fx, fy, cx, cy;
  private final double[] d;
  private final Matrix tilt;

  Undistort(CalibrationResult camera) {
    Matrix k = camera.cameraMatrix();
    fx = k.get(0, 0);
    fy = k.get(1, 1);
    cx = k.get(0, 2);
    cy = k.get(1, 2);
    d = Arrays.copyOf(camera.distortion().toArray(), 14); // what a smaller model does not have is zero
    tilt = tilt(d[12], d[13]);
  }

  /** Projects onto a sensor that is turned by these angles. */
  private static Matrix tilt(double x, double y) {
    Matrix turnX = new Matrix(3, 3, 1, 0, 0, 0, Math.cos(x), Math.sin(x), 0, -Math.sin(x), Math.cos(x));
    Matrix turnY = new Matrix(3, 3, Math.cos(y), 0, -Math.sin(y), 0, 1, 0, Math.sin(y), 0, Math.cos(y));
    Matrix turn = turnY.times(turnX);
    double depth = turn.get(2, 2);
    return new Matrix(3, 3, depth, 0, -turn.get(0, 2), 0, depth, -turn.get(1, 2), 0, 0, 1).times(turn);
  }

  /** Where the lens images what a camera without distortion images at that pixel. */
  double[] distorted(double u, double v) {
    double x = (u - cx) / fx;
    double y = (v - cy) / fy;
    double r2 = x * x + y * y;
    double radial = (1 + r2 * (d[0] + r2 * (d[1] + r2 * d[4]))) / (1 + r2 * (d[5] + r2 * (d[6] + r2 * d[7])));
    double xd = x * radial + 2 * d[2] * x * y + d[3] * (r2 + 2 * x * x) + r2 * (d[8] + r2 * d[9]);
    double yd = y * radial + d[2] * (r2 + 2 * y * y) + 2 * d[3] * x * y + r2 * (d[10] + r2 * d[11]);
    Matrix p = tilt.times(new Matrix(3, 1, xd, yd, 1));
    return new double[] {fx * p.get(0, 0) / p.get(2, 0) + cx, fy * p.get(1, 0) / p.get(2, 0) + cy};
  }

  BufferedImage undistort(BufferedImage picture) {
    int width = picture.getWidth();
    int height = picture.getHeight();
    BufferedImage undistorted = new BufferedImage(width, height, BufferedImage.TYPE_INT_RGB);
    for (int v = 0; v < height; ++v) {
      for (int u = 0; u < width; ++u) {
        double[] from = distorted(u, v);
        undistorted.setRGB(u, v, colour(picture, from[0], from[1]));
      }
    }
    return undistorted;
  }

  /** Between pixels the four around are mixed; outside the picture it is black. */
  private static int colour(BufferedImage picture, double x, double y) {
    int left = (int) Math.floor(x);
    int top = (int) Math.floor(y);
    int colour = 0;
    for (int shift = 0; shift <= 16; shift += 8) {
      double sum = 0.5;
      for (int i = 0; i < 4; ++i) {
        int u = left + i % 2;
        int v = top + i / 2;
        if (u >= 0 && v >= 0 && u < picture.getWidth() && v < picture.getHeight()) {
          sum += (1 - Math.abs(x - u)) * (1 - Math.abs(y - v)) * (picture.getRGB(u, v) >> shift & 255);
        }
      }
      colour |= (int) sum << shift;
    }
    return colour;
  }

  public static void main(String[] arguments) throws Exception {
    if (arguments.length != 3) {
      System.err.println("usage: Undistort RESULT.json PICTURE STRAIGHTENED.png");
      System.exit(2);
    }
    CalibrationResult camera = CalibrationResult.read(Path.of(arguments[0]));
    BufferedImage picture = ImageIO.read(new File(arguments[1]));
    if (picture == null || picture.getWidth() != camera.imageWidth()
        || picture.getHeight() != camera.imageHeight()) {
      System.err.println("ERROR: the picture is no picture, or of another size.");
      System.exit(1);
    }
    ImageIO.write(new Undistort(camera).undistort(picture), "png", new File(arguments[2]));
  }
}
