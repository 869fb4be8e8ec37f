#include <QDir>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "app/tarnelapp.h"
#include "platform/camera/camera_config.h"
#include "platform/camera/mp4_index.h"
#include "platform/cascades/single_instance.h"
#include "platform/device/sandbox.h"

namespace {

int run(int argc, char** argv) {
  // Before anything else: libraries look at the environment and the working directory that this sets.
  const std::string package = find_package_dir();
  if (package.empty()) {
    std::fputs("the application's package is missing\n", stderr);
    return EXIT_FAILURE;
  }
  if (enter_sandbox(package) != 0) return EXIT_FAILURE;

  // While the window is made ready, cameras are looked for; and it does not stand still for one that starts slowly.
  handset::CameraServiceConfig cameras = handset::config_from_device_profile();
  cameras.wait_for_picture = false;
  cameras.wait_for_film = false;
  cameras.edited_only = true;
  handset::configure_camera_service(cameras);
  handset::begin_camera_search();

  // Given up last: whoever starts next must find camera, film and preferences free.
  std::unique_ptr<handset::SingleInstance> place;
  bb::cascades::Application app(argc, argv);
  place = std::make_unique<handset::SingleInstance>(QDir::currentPath());
  if (!place->is_first()) return EXIT_SUCCESS;
  QObject::connect(place.get(), &handset::SingleInstance::activation_requested, &app,
                   &bb::cascades::Application::bringToFront);
  auto* const application = new tarnelApp(&app);
  application->tidy_films(&handset::complete_mp4);
  return app.exec();
}

}  // namespace

int main(int argc, char** argv) {
  handset::keep_heap_small();
  const int status = run(argc, argv);
  handset::wait_for_films(handset::camera_timeouts::finalise);
  handset::end_process(status);
}
