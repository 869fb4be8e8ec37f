#include "tests/webcam/rows.h"

#include <algorithm>
#include <array>

namespace webcam {
namespace {

// Patterns of what the program says.
constexpr const char* no_access = "no access";
constexpr const char* in_use = "in use by another program";
constexpr const char* no_picture = "sends no picture";
constexpr const char* no_format = "only formats that cannot be shown";
constexpr const char* gone = "disconnected";
constexpr const char* any_line = ".";
constexpr const char* no_camera = "no camera";

/// To be put before: the kind of source is known, it is the camera that is not.
const std::string not_refused = "^(?!.*unknown camera source).*";

/// A camera that is the only one is told of after five seconds and waited for, for fifteen.
constexpr double late_start = 17;

/// A start that fails has five seconds for it; the program itself takes up to two to be loaded in there.
constexpr double failed_start = 7;

// Options of the webcam.
#define CAMERA "webcam 0 --mode YUYV:320x240@30"
#define TWO_EQUAL CAMERA "; webcam 1 --mode YUYV:320x240@30"
#define NAMED_THREE                                           \
  "webcam 0 --name Left --mode YUYV:320x240@30;"              \
  "webcam 1 --name Right --serial R2 --mode YUYV:320x240@30;" \
  "webcam 2 --name 'Top View' --serial T3 --mode YUYV:320x240@30;"

#define WINDOW_ROW(title, steps) \
  { .name = title, .script = steps "; close_window", .says = any_line, .prints = answers }

/// What a window that has done everything in time prints: its slowest answer took less than 200 ms.
constexpr const char* answers = "^(?!.*in vain).*slowest answer (1?[0-9]?[0-9]) ms";

const std::vector<Row> plain_rows = {
    // Formats.
    {.name = "no_camera", .script = "film --size 320x240", .look = Look::scene, .says = no_camera},
    {.name = "vivid", .script = "vivid; film --size 320x180", .look = Look::red, .height = 180, .rate = 0},
    {.name = "yuyv", .script = CAMERA "; film", .look = Look::chart},
    {.name = "mjpeg", .script = "webcam 0 --mode MJPEG:320x240@30; film", .look = Look::chart},
    {.name = "nv12", .script = "webcam 0 --mode NV12:320x240@30; film", .look = Look::chart},
    {.name = "h264_beside_yuyv",
     .script = "webcam 0 --mode H264:320x240@30 --mode YUYV:320x240@30; film",
     .look = Look::chart,
     .journal = "start YUYV 320x240 30"},
    {.name = "h264_only", .script = "webcam 0 --mode H264:320x240@30; film", .look = Look::chart},
    {.name = "depth_only",
     .script = "webcam 0 --mode Z16:320x240@30; film",
     .status = 1,
     .says = no_format,
     .most_seconds = failed_start},
    {.name = "grey_only", .script = "webcam 0 --mode GREY:320x240@30; film", .look = Look::grey},
    // Rates and sizes.
    {.name = "15_before_30",
     .script = "webcam 0 --mode YUYV:320x240@15,30; film",
     .look = Look::chart,
     .journal = "start YUYV 320x240 30"},
    {.name = "5_60_120",
     .script = "webcam 0 --mode YUYV:320x240@5,60,120; film",
     .look = Look::chart,
     .rate = 60,
     .journal = "start YUYV 320x240 60"},
    {.name = "10_only", .script = "webcam 0 --mode YUYV:320x240@10; film", .look = Look::chart, .rate = 10},
    {.name = "odd_order_of_sizes",
     .script = "webcam 0 --mode YUYV:1280x1024@7.5 --mode YUYV:960x720@15 --mode YUYV:320x240@30 --mode "
               "YUYV:640x480@30; film",
     .look = Look::chart,
     .width = 640,
     .height = 480,
     .journal = "start YUYV 640x480 30"},
    {.name = "faster_mjpeg",
     .script = "webcam 0 --mode YUYV:640x480@15 --mode MJPEG:640x480@30; film",
     .look = Look::chart,
     .width = 640,
     .height = 480,
     .journal = "start MJPEG 640x480 30"},
    {.name = "raw_at_equal_rate",
     .script = "webcam 0 --mode MJPEG:320x240@30 --mode YUYV:320x240@30; film",
     .look = Look::chart,
     .journal = "start YUYV 320x240 30"},
    // Which camera.
    {.name = "infrared_twin_first",
     .script = "webcam 0 --name 'Integrated IR Camera' --mode GREY:320x240@30;"
               "webcam 1 --name 'Integrated Camera' --mode YUYV:320x240@30; film",
     .look = Look::chart,
     .port = 1},
    {.name = "two_equal_listed",
     .script =
         TWO_EQUAL "; list; [ $(grep 'Test Webcam' $out/stdout | sort -u | wc -l) = 2 ] && echo differ >>$out/stdout",
     .prints = "differ"},
    {.name = "by_name", .script = NAMED_THREE "film --source camera:Right", .look = Look::chart, .port = 1},
    {.name = "by_part_of_a_name", .script = NAMED_THREE "film --source camera:Top", .look = Look::chart, .port = 2},
    {.name = "by_unknown_name",
     .script = NAMED_THREE "film --source camera:Bottom",
     .status = 1,
     .says = not_refused + "Bottom",
     .most_seconds = failed_start},
    {.name = "by_ambiguous_name",
     .script = TWO_EQUAL "; film --source camera:Test",
     .status = 1,
     .says = not_refused + "Test",
     .most_seconds = failed_start},
    {.name = "list",
     .script = NAMED_THREE "webcam 3 --name Packed --mode H264:320x240@30; list",
     .prints = "Left.*320x240@30.*Right.*Top View.*T3"},
    {.name = "list_says_why_not",
     .script = "webcam 0 --name Depth --mode Z16:320x240@30; list",
     .prints = std::string("Depth.*") + no_format},
    {.name = "metadata_node_is_no_camera",
     .script = CAMERA "; list; [ \"$(grep -c 'Test Webcam' $out/stdout)\" = 1 ] && echo once >>$out/stdout",
     .prints = "once"},
    // Trouble.
    {.name = "unplugged",
     .script = CAMERA "; start --seconds 20; filming; sleep 1; tell 0 unplug; end",
     .look = Look::chart,
     .status = 1,
     .says = gone,
     .most_seconds = 15},
    {.name = "replugged",
     .script = CAMERA "; start --seconds 20; filming; unplugged 0; end; rm -f $dir/film.mp4; replugged 0; film",
     .look = Look::chart},
    {.name = "other_is_filmed_instead",
     .script = TWO_EQUAL "; film_before; unplugged 0; film",
     .look = Look::chart,
     .port = 1},
    {.name = "busy", .script = CAMERA "; busy 0; film", .status = 1, .says = in_use, .most_seconds = failed_start},
    {.name = "busy_by_name",
     .script = TWO_EQUAL " --name Other; busy 1; film --source camera:Other",
     .status = 1,
     .says = std::string("Other.*") + in_use,
     .most_seconds = failed_start},
    {.name = "dead", .script = CAMERA " --do dead; film", .status = 1, .says = no_picture, .most_seconds = late_start},
    {.name = "late", .script = CAMERA " --do 'late 4'; film", .look = Look::chart},
    {.name = "refuses",
     .script = CAMERA "; tell 0 refuse; film",
     .status = 1,
     .says = any_line,
     .most_seconds = failed_start},
    {.name = "denied",
     .script = CAMERA "; chmod 000 /dev/video0; as_user; film",
     .status = 1,
     .says = no_access,
     .most_seconds = failed_start},
    {.name = "stalls_2_seconds",
     .script = CAMERA "; start --seconds 4; filming; tell 0 'stall 2'; end",
     .look = Look::chart,
     .rate = 0,
     .pause = 2},
    {.name = "stalls_6_seconds",
     .script = CAMERA "; start --seconds 9; filming; sleep 1; tell 0 'stall 6'; end",
     .look = Look::chart,
     .rate = 0,
     .pause = 6.5,
     .says = std::string(no_picture) + "; starting it again"},
    {.name = "stalls_for_good",
     .script = CAMERA "; start --seconds 40; filming; sleep 1; tell 0 'stall 60'; end",
     .look = Look::chart,
     .status = 1,
     .says = no_picture,
     .most_seconds = 18},
    {.name = "broken_mjpeg",
     .script = "webcam 0 --mode MJPEG:320x240@30 --do 'broken 7'; film",
     .look = Look::chart,
     .rate = 0,
     .broken_every = 7},
    {.name = "short_yuyv",
     .script = CAMERA " --do 'broken 7'; film",
     .look = Look::chart,
     .rate = 0,
     .broken_every = 7},
    // Sound.
    {.name = "microphone",
     .script = CAMERA "; microphones Desk; play Desk; film --microphone default",
     .look = Look::chart,
     .sound = true},
    {.name = "microphone_by_name",
     .script = CAMERA "; microphones Desk Lamp; play Lamp; film --microphone CARD=Lamp,DEV=0",
     .look = Look::chart,
     .sound = true},
    {.name = "microphones_listed", .script = "microphones Desk Lamp; list", .prints = "CARD=Lamp.*CARD=Desk"},
    {.name = "no_microphone", .script = CAMERA "; film --microphone default", .look = Look::chart, .says = ".*"},
    // The window: it follows the cameras, and answers keys all the time.
    WINDOW_ROW("window_unplugged", CAMERA "; window; shown 1; unplugged 0; says disconnected; replugged 0; shown 2"),
    WINDOW_ROW("window_plugged_in_later", "window; says 'no camera found'; " CAMERA "; shown 2"),
    WINDOW_ROW("window_denied",
               CAMERA "; chmod 000 /dev/video0; as_user; window; says 'open camera'; chmod 666 /dev/video0; shown 1"),
    WINDOW_ROW("window_busy", CAMERA "; busy 0; window; says 'in use by another program'; free; shown 1"),
    WINDOW_ROW("window_other_is_busy", TWO_EQUAL "; busy 0; window; says 'Using Test Webcam'; shown 1"),
    WINDOW_ROW("window_dead", CAMERA " --do dead; window; says 'sends no picture'; tell 0 alive; shown 1"),
    WINDOW_ROW("window_late", CAMERA " --do 'late 7'; window; says 'sends no picture'; shown 1"),
    WINDOW_ROW("window_stalls_for_good",
               CAMERA "; window; shown 1; tell 0 'stall 18'; says 'Resource are being revoked'; shown 2"),
};

const std::vector<Row> pipewire_rows = {
    {.name = "pw_no_camera", .script = "film --size 320x240", .look = Look::scene, .says = no_camera},
    {.name = "pw_yuyv", .script = CAMERA "; film", .look = Look::chart},
    {.name = "pw_15_before_30",
     .script = "webcam 0 --mode YUYV:320x240@15,30; film",
     .look = Look::chart,
     .journal = "start YUYV 320x240 30"},
    {.name = "pw_unplugged",
     .script = CAMERA "; start --seconds 20; filming; sleep 1; tell 0 unplug; end",
     .look = Look::chart,
     .status = 1,
     .says = gone,
     .most_seconds = 15},
    {.name = "pw_busy", .script = CAMERA "; busy 0; film", .status = 1, .says = in_use, .most_seconds = failed_start},
    {.name = "pw_dead",
     .script = CAMERA " --do dead; film",
     .status = 1,
     .says = no_picture,
     .most_seconds = late_start},
    {.name = "pw_late", .script = CAMERA " --do 'late 4'; film", .look = Look::chart},
    {.name = "pw_stalls_2_seconds",
     .script = CAMERA "; start --seconds 4; filming; tell 0 'stall 2'; end",
     .look = Look::chart,
     .rate = 0,
     .pause = 2},
    {.name = "pw_microphone",
     .script = CAMERA "; microphones Desk; play Desk; film --microphone default",
     .look = Look::chart,
     .sound = true},
    WINDOW_ROW("pw_window_waits_for_pipewire",
               CAMERA "; kill -STOP $(pidof pipewire); window; soon grep -q 'Looking for cameras' $out/stderr;"
                      "grep -q Selecting $out/stderr && echo 'in vain: half a list';"
                      "kill -CONT $(pidof pipewire); shown 1"),
    WINDOW_ROW("pw_window_unplugged", CAMERA "; window; shown 1; unplugged 0; says disconnected; replugged 0; shown 2"),
};

#undef CAMERA
#undef TWO_EQUAL
#undef NAMED_THREE
#undef WINDOW_ROW

}  // namespace

const std::vector<Row>& rows() {
  static const std::vector<Row> all = [] {
    std::vector<Row> list = plain_rows;
    for (Row row : pipewire_rows) {
      row.pipewire = true;
      list.push_back(row);
    }
    return list;
  }();
  return all;
}

bool is_quick(const Row& row) {
  constexpr std::array thorough = {"nv12",
                                   "h264_beside_yuyv",
                                   "10_only",
                                   "raw_at_equal_rate",
                                   "by_part_of_a_name",
                                   "by_unknown_name",
                                   "by_ambiguous_name",
                                   "list_says_why_not",
                                   "replugged",
                                   "busy_by_name",
                                   "stalls_6_seconds",
                                   "stalls_for_good",
                                   "broken_mjpeg",
                                   "microphone_by_name",
                                   "no_microphone",
                                   "window_late",
                                   "window_other_is_busy",
                                   "window_stalls_for_good",
                                   "window_plugged_in_later",
                                   "microphones_listed",
                                   "short_yuyv",
                                   "refuses",
                                   "pw_no_camera",
                                   "by_name",
                                   "pw_15_before_30",
                                   "metadata_node_is_no_camera",
                                   "pw_late",
                                   "pw_dead",
                                   "pw_stalls_2_seconds",
                                   "pw_window_waits_for_pipewire"};
  return std::find(thorough.begin(), thorough.end(), row.name) == thorough.end();
}

}  // namespace webcam
