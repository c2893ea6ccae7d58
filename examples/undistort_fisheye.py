"""Straightens a picture of a fisheye with a result file:
undistort_fisheye.py RESULT_fisheye.json PICTURE STRAIGHT [DEGREES]

DEGREES is how much of what is seen, from left to right, the straight picture shows (default: 90)."""
import json
import math
import sys

import cv2
import numpy


def matrix(entry):
    return numpy.array(entry["data"], dtype=float).reshape(entry["rows"], entry["cols"])


def main(result_file, picture_file, undistorted_file, degrees="90"):
    with open(result_file, encoding="utf-8") as file:
        result = json.load(file)
    # The result describes the sensor, whichever way up the camera was held.
    picture = cv2.imread(picture_file, cv2.IMREAD_COLOR | cv2.IMREAD_IGNORE_ORIENTATION)
    width, height = result["imgWidth"], result["imgHeight"]
    if picture is None or picture.shape[:2] != (height, width):
        sys.exit("ERROR: the picture is missing or of another size.")
    focal = 0.5 * width / math.tan(math.radians(0.5 * float(degrees)))
    pinhole = numpy.array([[focal, 0, 0.5 * (width - 1)], [0, focal, 0.5 * (height - 1)], [0, 0, 1]])
    undistorted = cv2.fisheye.undistortImage(
        picture, matrix(result["cameraMatrix"]), matrix(result["fisheyeCoefs"]), Knew=pinhole)
    cv2.imwrite(undistorted_file, undistorted)


if __name__ == "__main__":
    if len(sys.argv) not in (4, 5):
        sys.exit(__doc__)
    main(*sys.argv[1:])
