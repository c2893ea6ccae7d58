"""Straightens a picture with a result file: undistort.py RESULT.json PICTURE STRAIGHTENED"""
import json
import sys

import cv2
import numpy


def matrix(entry):
    return numpy.array(entry["data"], dtype=float).reshape(entry["rows"], entry["cols"])


def main(result_file, picture_file, undistorted_file):
    with open(result_file, encoding="utf-8") as file:
        result = json.load(file)
    # The result describes the sensor, whichever way up the camera was held.
    picture = cv2.imread(picture_file, cv2.IMREAD_COLOR | cv2.IMREAD_IGNORE_ORIENTATION)
    if picture is None or picture.shape[:2] != (result["imgHeight"], result["imgWidth"]):
        sys.exit("ERROR: the picture is missing or of another size.")
    undistorted = cv2.undistort(picture, matrix(result["cameraMatrix"]), matrix(result["distCoefs"]))
    cv2.imwrite(undistorted_file, undistorted)


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*sys.argv[1:])
