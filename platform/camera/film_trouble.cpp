#include "platform/camera/film_trouble.h"

#include <cerrno>
#include <system_error>

namespace handset {

std::string film_trouble(int error) {
  switch (error) {
    case ENOSPC:
      return "the storage is full";
    case EDQUOT:
      return "your share of the storage is used up";
    case EACCES:
    case EPERM:
    case EROFS:
      return "the Camera folder is read-only";
    case ENOENT:
    case ENOTDIR:
      return "the Camera folder is missing";
    case ETIMEDOUT:
      return "the storage does not answer";
    default:
      return "the film cannot be written (" + std::generic_category().message(error) + ")";
  }
}

}  // namespace handset
