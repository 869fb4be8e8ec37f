#include "assets/render/textures.h"

#include "engine/texture_table.h"

namespace assets {

TexturePainter texturePainter(int entry) {
  static constexpr TexturePainter painters[texture_count] = {
      brick,       fogGrey,    fogGreyYellow, fogOrange,      fogWhite,  frameGold,
      frostWindow, orangeDust, scopeRifle,    scopePeriscope, smokeDark, vintage,
  };
  return painters[entry];
}

}  // namespace assets
