#include "bench/screen_row.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

struct ScreenRow::Connection {
  Display* display = XOpenDisplay(nullptr);
  XImage* image = nullptr;

  void drop() {
    if (image != nullptr) XDestroyImage(image);
    image = nullptr;
  }
};

ScreenRow::ScreenRow(double x, double y, double width)
    : connection_(new Connection),
      x_(static_cast<int>(x)),
      y_(static_cast<int>(y)),
      width_(static_cast<unsigned>(width)) {}

ScreenRow::~ScreenRow() {
  connection_->drop();
  if (connection_->display != nullptr) XCloseDisplay(connection_->display);
  delete connection_;
}

bool ScreenRow::fetch() {
  connection_->drop();
  Display* const display = connection_->display;
  if (display == nullptr) return false;
  connection_->image = XGetImage(display, DefaultRootWindow(display), x_, y_, width_, 1, AllPlanes, ZPixmap);
  return connection_->image != nullptr;
}

int ScreenRow::green(int x) const {
  return static_cast<int>(XGetPixel(connection_->image, x, 0) >> 8 & 0xff);
}
