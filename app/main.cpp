#include <cstdio>
#include <cstdlib>

#include "app/tarnelapp.h"
#include "platform/device/sandbox.h"

int main(int argc, char** argv) {
  // Before anything else: libraries look at the environment and the working directory that this sets.
  const std::string package = find_package_dir();
  if (package.empty()) {
    std::fputs("the application's package is missing\n", stderr);
    return EXIT_FAILURE;
  }
  if (enter_sandbox(package) != 0) return EXIT_FAILURE;

  bb::cascades::Application app(argc, argv);
  new tarnelApp(&app);
  return app.exec();
}
