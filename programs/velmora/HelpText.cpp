/// The text that explains the application to its user.
#include "velmora/HelpText.h"

#include "Calibrator.h"

namespace app {

namespace {

constexpr char COMMANDS[] =
    R"(Commands:

   -> P:       Take picture.
   -> ENTER:   Calibrate.
   -> Q:       Quit.

)";

constexpr char GENERAL_OPTIONS[] =
    R"(Possible options for the test application:

        --help              Display this help.

        --width             Set the frame width. Default is '640'.

        --height            Set the frame height. Default is '480'.

        --fps               Set the input framerate. Default is '60'.

        --hdist             Set the distance of the HDIST distance value on the pattern, in meters. Default is '0.19'.

        --model             Set the calibration model: 'classic', 'rational', or 'full'. Default is 'rational'.

        --output            Set output calibration file name and path.

)";

// Some lines end in a blank, which is written as an escape so that editors leave it alone.
constexpr char SOURCE_OPTIONS[] =
    "        --video             Path to the video to be processed. In case of stereoscopy, is the left "
    "video\n"
    "\n"
    "        --video_right       Enable stereoscopy for video, and provide the path to the right video. Must "
    "be "
    "used\x20\n"
    "                            together with '--video' for the left video.\n"
    "\n"
    "        --webcam            Open the webcam with the index provided. In case of stereoscopy, is the "
    "left "
    "webcam.\n"
    "\n"
    "        --webcam_right      Enable stereoscopy for webcams, and provide the index of the right webcam. "
    "Must "
    "be\x20\n"
    "                            used together with '--webcam' for the left webcam.\n"
    "\n"
    "        --split             Split the video in half, 'horizontal' or 'vertical', to allow stereoscopy "
    "from a "
    "single stream\n"
    "\n"
    "        --select      \t    In the stereo case, select one camera for monocular calibration. Posible "
    "values "
    "are 'left' or 'right'.\n"
    "\n"
    "        --gstreamer         Acquire the video stream using gstreamer, and provide the IP address of the "
    "host. Default\n"
    "                            codec is 'h264', and default port is '5000'.\n"
    "\n"
    "        --codec             Should be used with '--gstreamer'. Available codecs are 'h264' and "
    "'mjpeg'.\n"
    "\n"
    "        --port              Should be used with '--gstreamer'. Set the port of the gstreamer host.\n"
    "\n"
    "        --rtmp              Address of the RTMP address from where the stream should be acquired, "
    "such\x20\n"
    "                            as 'rtmp://127.0.0.1/live/myrtmp'.\n"
    "\n";

constexpr char STEREO_OPTIONS[] =
    R"(        --calib_left        JSON calibration parameters of the left camera. Required for stereo calibration.

        --calib_right       JSON calibration parameters of the right camera. Required for stereo calibration.


)";

constexpr char EXAMPLES[] =
    "Examples:\x20\n"
    "\n"
    R"(   -> Simple calibration of a classic 640x480 webcam:

        ./Velmora --webcam 0

   -> Calibration of a webcam with some other options set:

        ./Velmora --webcam 0 --width 1280 --height 720 --fps 30 --hdist 0.18 --output my_file

   -> Calibration of a single 1280x480 stereo cam (ex. ELP model):

        ./Velmora --webcam 0 --width 1280 --height 480 --split vertical --select left --output left
        ./Velmora --webcam 0 --width 1280 --height 480 --split vertical --select right --output right
        ./Velmora --webcam 0 --width 1280 --height 480 --split vertical --calib_left left.json --calib_right right.json --output stereo

   -> Calibration of a pair of 640x480 webcam for stereo:

        ./Velmora --webcam 1 --model rational --output left
        ./Velmora --webcam 2 --model rational --output right
        ./Velmora --webcam 1 --webcam_right 2 --calib_left left.json --calib_right right.json --output stereo

)";

}  // namespace

std::string HelpText() {
  return "Welcome to the Calibration application.\n"
         "Current application version: " +
         Calibrator::VERSION + "\n\n" + COMMANDS + GENERAL_OPTIONS + SOURCE_OPTIONS + STEREO_OPTIONS +
         EXAMPLES;
}

}  // namespace app
