#pragma once

// The icons: glyphs of assets/icons put together. Every drawing there is 64 x 64 units.

#include <QDir>
#include <QImage>
#include <QString>
#include <optional>
#include <span>

namespace assets {

/// What an icon is made of. A name without a folder and ".svg" is a drawing of assets/icons.
struct Icon {
  const char* name;                ///< of the picture, without ".png"
  const char* glyph;               ///< what it shows
  const char* ground = nullptr;    ///< a button: what the glyph, made smaller, lies on
  bool crossed = false;            ///< a stroke through the glyph: switched off
  std::optional<int> effect = {};  ///< colour filter that the glyph, a picture, is put through
  int size = 128;                  ///< width and height in pixels
};

std::span<const Icon> icons();

/// 32-bit ARGB on a transparent ground, with a soft dark edge that sets it off from a bright picture. Empty
/// when a drawing is missing or is not one; `missing` is then its file. The colour filters keep their state
/// in one place: one thread at a time.
QImage drawIcon(const Icon& icon, const QDir& drawings, QString* missing);

}  // namespace assets
