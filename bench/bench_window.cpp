// What a user sees and pays while the whole program records at 1080p with a texture, the stamp and one color kept,
// drawn by the CPU on an X server.
//
// Usage: bench_window latency SECONDS     from a frame's arrival at the camera to its pixels in the X server
//        bench_window cost SECONDS SOURCE CPU of the process while SOURCE is recorded

#include <gst/base/gstbasetransform.h>
#include <gst/gst.h>
#include <gst/video/video.h>
#include <sys/resource.h>

#include <QQuickWindow>
#include <QTimer>
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "app/tarnelapp.h"
#include "bench/bench_surroundings.h"
#include "bench/screen_row.h"
#include "engine/color_filter.h"
#include "engine/filter_thread.h"
#include "engine/overlay_loader.h"
#include "engine/stamp.h"
#include "engine/texture_table.h"
#include "platform/camera/camera_config.h"
#include "platform/camera/scene_painter.h"
#include "platform/camera/scene_source.h"
#include "platform/cascades/viewfinder_picture.h"
#include "platform/device/sandbox.h"

using Clock = std::chrono::steady_clock;

namespace {

constexpr int picture_width = 1920, picture_height = 1080;
constexpr int keep_red = 11;

/// When a frame arrived, by its number's low bits. Written by the streaming thread, read by the thread that looks.
std::array<std::atomic<Clock::rep>, 65536> arrived;

/// @param cell  of a cell's number, whether it is white
template <typename Cell>
int read_strip(Cell cell) {
  int number = 0;
  for (int bit = 0; bit < handset::scene_strip_cells; ++bit) number = 2 * number + (cell(bit) ? 1 : 0);
  return number;
}

GstPadProbeReturn note_arrival(GstPad*, GstPadProbeInfo* info, gpointer) {
  GstMapInfo map;
  GstBuffer* const buffer = GST_PAD_PROBE_INFO_BUFFER(info);
  const Clock::rep now = Clock::now().time_since_epoch().count();
  if (!gst_buffer_map(buffer, &map, GST_MAP_READ)) return GST_PAD_PROBE_OK;
  const handset::SceneStrip strip = handset::scene_strip(picture_width, picture_height);
  const std::uint8_t* const row = map.data + (strip.y + strip.cell / 2) * picture_width + strip.x + strip.cell / 2;
  arrived[static_cast<std::size_t>(read_strip([&](int bit) { return row[bit * strip.cell] > 127; }))] = now;
  gst_buffer_unmap(buffer, &map);
  return GST_PAD_PROBE_OK;
}

/// Passes frames on and notes when they come.
struct ArrivalTap {
  GstBaseTransform parent;
};
struct ArrivalTapClass {
  GstBaseTransformClass parent;
};
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"
G_DEFINE_TYPE(ArrivalTap, arrival_tap, GST_TYPE_BASE_TRANSFORM)
#pragma GCC diagnostic pop

void arrival_tap_class_init(ArrivalTapClass* klass) {
  GstElementClass* const element = GST_ELEMENT_CLASS(klass);
  for (const auto& [name, direction] : {std::pair{"sink", GST_PAD_SINK}, std::pair{"src", GST_PAD_SRC}}) {
    GstCaps* const any = gst_caps_new_any();
    gst_element_class_add_pad_template(element, gst_pad_template_new(name, direction, GST_PAD_ALWAYS, any));
    gst_caps_unref(any);
  }
  gst_element_class_set_static_metadata(element, "Arrival tap", "Filter/Video", "Notes when frames come", "Morvane");
}

void arrival_tap_init(ArrivalTap* tap) {
  gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(tap), TRUE);
  gst_pad_add_probe(GST_BASE_TRANSFORM_SINK_PAD(GST_BASE_TRANSFORM(tap)), GST_PAD_PROBE_TYPE_BUFFER, note_arrival,
                    nullptr, nullptr);
}

/// Looks at the scene's strip in the X server's pixels.
class Looker {
 public:
  /// @param strip  in the root window's pixels
  explicit Looker(QRectF strip) : strip_(strip), row_(strip.x(), strip.center().y(), strip.width() + 1) {}

  /// @return milliseconds from the arrival of each frame to its sight
  std::vector<double> look(std::chrono::seconds time) {
    const double cell = strip_.width() / handset::scene_strip_cells;
    const double first = strip_.x() - static_cast<int>(strip_.x()) + cell / 2;
    std::vector<double> delays;
    int last = -1;
    for (const Clock::time_point end = Clock::now() + time; Clock::now() < end;) {
      if (!row_.fetch()) break;
      const Clock::time_point now = Clock::now();
      const int number = read_strip([&](int bit) { return row_.green(static_cast<int>(first + bit * cell)) > 127; });
      const Clock::duration since{arrived[static_cast<std::size_t>(number)].load()};
      if (number != last && last != -1 && since.count() != 0) {
        delays.push_back(std::chrono::duration<double, std::milli>(now.time_since_epoch() - since).count());
      }
      last = number;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return delays;
  }

 private:
  const QRectF strip_;
  ScreenRow row_;
};

/// Where the scene's strip is on the screen.
QRectF strip_on_screen(tarnelApp* app) {
  bb::cascades::ForeignWindowControl* const item = app->mViewfinderWindow;
  const QRectF place = handset::place_of(QSizeF(picture_width, picture_height), item->size());
  const handset::SceneStrip strip = handset::scene_strip(picture_width, picture_height);
  const double scale_x = place.width() / picture_width, scale_y = place.height() / picture_height;
  const QRectF in_item(place.x() + strip.x * scale_x, place.y() + strip.y * scale_y,
                       strip.cell * handset::scene_strip_cells * scale_x, strip.cell * scale_y);
  const QRectF in_window = item->mapRectToScene(in_item);
  return in_window.translated(item->window()->mapToGlobal(QPoint(0, 0)));
}

void set_effects(bool all) {
  filter_init(static_cast<double>(_color_filter_value), filter_match_red);
  _cur_camera_filter = keep_red;
  if (!all) return;
  fullscreen = true;
  logo_load_image(0, 0, img_textures[texture_entry_of_row(0)], true);
  generate_datetime({1, 5, 4}, std::time(nullptr), load_datetime_template(5));
}

int measure_latency(tarnelApp* app, int seconds) {
  const QRectF strip = strip_on_screen(app);
  app->startRecording();
  run_for(3000);
  std::vector<double> delays;
  QEventLoop loop;
  std::thread looking([&] {
    delays = Looker(strip).look(std::chrono::seconds(seconds));
    QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
  });
  loop.exec();
  looking.join();
  app->record_stop();
  std::sort(delays.begin(), delays.end());
  if (delays.size() < static_cast<std::size_t>(seconds) * 20) {
    std::fprintf(stderr, "only %zu frames were seen; is the window covered?\n", delays.size());
    return EXIT_FAILURE;
  }
  const auto at = [&](double share) { return delays[static_cast<std::size_t>(share * double(delays.size() - 1))]; };
  std::printf("%zu of %d frames seen; arrival to pixels: median %.1f ms, 99 %% %.1f ms, longest %.1f ms\n",
              delays.size(), seconds * 30, at(0.5), at(0.99), delays.back());
  return EXIT_SUCCESS;
}

double cpu_seconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         1e-6 * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

int measure_cost(tarnelApp* app, int seconds) {
  run_for(4000);  // encoders are proven
  app->startRecording();
  run_for(2000);
  const double before = cpu_seconds();
  const auto start = Clock::now();
  run_for(seconds * 1000);
  const double wall = std::chrono::duration<double>(Clock::now() - start).count();
  const double cpu = cpu_seconds() - before;
  app->record_stop();
  std::printf("%.2f s of CPU in %.2f s\n", cpu, wall);
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 2 ? argv[1] : "";
  const int seconds = argc > 2 ? std::atoi(argv[2]) : 0;
  if (seconds <= 0 || !(mode == "latency" || (mode == "cost" && argc > 3))) {
    std::fputs("Usage: bench_window latency SECONDS | cost SECONDS SOURCE\n", stderr);
    return 2;
  }
  handset::keep_heap_small();
  gst_init(nullptr, nullptr);
  handset::register_scene_source();
  gst_element_register(nullptr, "arrivaltap", GST_RANK_NONE, arrival_tap_get_type());
  const std::string source =
      mode == "cost" ? argv[3]
                     : "gst:morvanescene ! video/x-raw,format=NV12,width=1920,height=1080,framerate=30/1 ! arrivaltap";
  const Surroundings surroundings(source);
  if (enter_sandbox(MORVANE_PACKAGE_DIR) != 0) return EXIT_FAILURE;
  bb::cascades::Application application(argc, argv);
  const std::unique_ptr<tarnelApp> app = start_at_size(&application, picture_width, picture_height);
  if (!app) return EXIT_FAILURE;
  set_effects(mode == "cost");
  run_for(1000);
  return mode == "cost" ? measure_cost(app.get(), seconds) : measure_latency(app.get(), seconds);
}
