#include "assets/render/picture.h"

#include <QPainter>

namespace assets {
namespace {

/// Running mean over 2 * radius + 1 lines of `width` numbers each; the last line is followed by the first.
/// Whole lines at a time, so that a mean down the columns reads memory in order too.
void boxMean(const float* in, float* out, int lines, int width, int radius) {
  std::vector<double> sums(static_cast<std::size_t>(width));
  const auto line = [&](int i) { return in + static_cast<std::ptrdiff_t>(wrapped(i, lines)) * width; };
  for (int i = -radius; i <= radius; ++i) {
    for (int k = 0; k < width; ++k) sums[k] += line(i)[k];
  }
  for (int i = 0; i < lines; ++i) {
    const float* entering = line(i + radius + 1);
    const float* leaving = line(i - radius);
    for (int k = 0; k < width; ++k) {
      *out++ = static_cast<float>(sums[k] / (2 * radius + 1));
      sums[k] += entering[k] - leaving[k];
    }
  }
}

unsigned quantize(double value, double threshold) {
  return static_cast<unsigned>(saturate(value) * 255 + std::min(threshold, 0.999));
}

}  // namespace

Colour ramp(const std::vector<Colour>& colours, double t) {
  const double place = saturate(t) * static_cast<double>(colours.size() - 1);
  const std::size_t below = std::min(static_cast<std::size_t>(place), colours.size() - 2);
  return mix(colours[below], colours[below + 1], place - static_cast<double>(below));
}

Pixel over(const Pixel& below, Colour colour, double alpha) {
  const double through = below.alpha * (1 - alpha);
  const double total = alpha + through;
  if (total <= 0) return {colour, 0};
  return {mix(colour, below.colour, through / total), total};
}

Field::Field(QSize size) : mSize(size), mCells(static_cast<std::size_t>(size.width()) * size.height()) {}

Field Field::drawn(QSize size, const std::function<void(QPainter&)>& draw) {
  QImage image(size, QImage::Format_Grayscale8);
  image.fill(Qt::black);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(double(size.width()) / fullWidth, double(size.height()) / fullHeight);
  painter.setPen(Qt::white);
  painter.setBrush(Qt::white);
  draw(painter);
  painter.end();
  Field field(size);
  for (int row = 0; row < size.height(); ++row) {
    const uchar* line = image.constScanLine(row);
    std::transform(line, line + size.width(), &field.cell(0, row), [](uchar v) { return v / 255.0F; });
  }
  return field;
}

double Field::at(double x, double y) const {
  const double column = x * mSize.width() / fullWidth - 0.5;
  const double row = y * mSize.height() / fullHeight - 0.5;
  const int left = floorOf(column);
  const int top = floorOf(row);
  const int x0 = wrapped(left, mSize.width());
  const int y0 = wrapped(top, mSize.height());
  const int x1 = x0 + 1 == mSize.width() ? 0 : x0 + 1;
  const int y1 = y0 + 1 == mSize.height() ? 0 : y0 + 1;
  const float* upper = mCells.data() + static_cast<std::size_t>(y0) * mSize.width();
  const float* lower = mCells.data() + static_cast<std::size_t>(y1) * mSize.width();
  const double dx = column - left;
  const double above = blend(upper[x0], upper[x1], dx);
  return blend(above, blend(lower[x0], lower[x1], dx), row - top);
}

Field Field::blurred(double radius) const {
  // Three box means of this radius come close to a gaussian of the same standard deviation.
  const int cells = static_cast<int>(std::lround(radius * mSize.width() / fullWidth));
  Field result = *this;
  if (cells < 1) return result;
  Field other(mSize);
  for (int pass = 0; pass < 3; ++pass) {
    for (int row = 0; row < mSize.height(); ++row) {
      boxMean(&result.cell(0, row), &other.cell(0, row), mSize.width(), 1, cells);
    }
    boxMean(&other.cell(0, 0), &result.cell(0, 0), mSize.height(), mSize.width(), cells);
  }
  return result;
}

Slope slopeAt(const Field& height, double x, double y, double reach) {
  return {(height.at(x + reach, y) - height.at(x - reach, y)) / (2 * reach),
          (height.at(x, y + reach) - height.at(x, y - reach)) / (2 * reach)};
}

double lit(Slope slope, double steepness) {
  constexpr double lightX = -0.48;
  constexpr double lightY = -0.64;
  constexpr double lightZ = 0.6;
  const double nx = -slope.x * steepness;
  const double ny = -slope.y * steepness;
  return saturate((nx * lightX + ny * lightY + lightZ) / std::sqrt(nx * nx + ny * ny + 1));
}

double ditherThreshold(int column, int row) {
  const double inner = 0.06711056 * column + 0.00583715 * row;
  const double outer = 52.9829189 * (inner - std::floor(inner));
  return outer - std::floor(outer);
}

QRgb toRgb(const Pixel& pixel, double threshold) {
  const Colour& c = pixel.colour;
  return quantize(pixel.alpha, threshold) << 24 | quantize(c.r, threshold) << 16 | quantize(c.g, threshold) << 8 |
         quantize(c.b, threshold);
}

double fromMiddle(double x, double y, double power) {
  const double dx = std::abs(x - fullWidth / 2.0) / (fullWidth / 2.0);
  const double dy = std::abs(y - fullHeight / 2.0) / (fullHeight / 2.0);
  if (power == 2) return std::sqrt(dx * dx + dy * dy);
  return std::pow(std::pow(dx, power) + std::pow(dy, power), 1 / power);
}

}  // namespace assets
