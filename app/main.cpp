#include <QDir>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "app/tarnelapp.h"
#include "platform/cascades/single_instance.h"
#include "platform/device/sandbox.h"

int main(int argc, char** argv) {
  // Before anything else: libraries look at the environment and the working directory that this sets.
  const std::string package = find_package_dir();
  if (package.empty()) {
    std::fputs("the application's package is missing\n", stderr);
    return EXIT_FAILURE;
  }
  if (enter_sandbox(package) != 0) return EXIT_FAILURE;

  // Given up last: whoever starts next must find camera, film and preferences free.
  std::unique_ptr<handset::SingleInstance> place;
  bb::cascades::Application app(argc, argv);
  place = std::make_unique<handset::SingleInstance>(QDir::currentPath());
  if (!place->is_first()) return EXIT_SUCCESS;
  QObject::connect(place.get(), &handset::SingleInstance::activation_requested, &app,
                   &bb::cascades::Application::bringToFront);
  new tarnelApp(&app);
  return app.exec();
}
