#include "capture/screenshot_name.h"

#include <cstdlib>

char* make_screenshot_name(const std::tm& time) {
  constexpr std::size_t size = 128;
  char* const name = static_cast<char*>(std::malloc(size));
  if (name == nullptr) return nullptr;
  if (std::strftime(name, size, "IMG_%b-%d-%Y_%I-%M-%S.png", &time) == 0) name[0] = '\0';
  return name;
}
