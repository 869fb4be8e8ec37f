// render_assets DIRECTORY: draws every picture that the program needs into DIRECTORY, laid out as the
// application package. Exit status 0, or 1 with one line on the error stream.

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <atomic>
#include <cstdio>
#include <functional>
#include <string_view>
#include <thread>
#include <vector>

#include "assets/render/font.h"
#include "assets/render/glyphs.h"
#include "assets/render/png.h"
#include "assets/render/textures.h"
#include "engine/stamp_layout.h"
#include "engine/texture_table.h"

namespace {

struct Job {
  QString path;
  std::function<QImage()> draw;
};

/// The tables name files as the running program sees them, where "app/" is the package.
QString inPackage(const QDir& package, std::string_view path) {
  path.remove_prefix(std::string_view("app/").size());
  return package.filePath(QString::fromUtf8(path.data(), static_cast<qsizetype>(path.size())));
}

std::vector<Job> jobs(const QDir& package) {
  std::vector<Job> list;
  for (int entry = 0; entry < texture_count; ++entry) {
    list.push_back({inPackage(package, img_textures[entry]), [entry] {
                      return assets::texturePainter(entry)({1920, 1080});
                    }});
  }
  for (int color = 0; color < stamp_color_count; ++color) {
    list.push_back({inPackage(package, img1_path[color]), [color] { return assets::glyphSheet(color); }});
  }
  list.push_back({inPackage(package, img2_path), assets::stampPlate});
  return list;
}

bool run(const Job& job) {
  if (!QDir().mkpath(QFileInfo(job.path).path())) {
    std::fprintf(stderr, "render_assets: cannot create the directory of %s\n", qPrintable(job.path));
    return false;
  }
  const QString trouble = assets::writePng(job.draw(), job.path);
  if (trouble.isEmpty()) return true;
  std::fprintf(stderr, "render_assets: cannot write %s: %s\n", qPrintable(job.path), qPrintable(trouble));
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  if (argc != 2) {
    std::fprintf(stderr, "usage: render_assets DIRECTORY\n");
    return 1;
  }
  if (assets::fontFamily().isEmpty()) {
    std::fprintf(stderr, "render_assets: no font is installed\n");
    return 1;
  }
  const std::vector<Job> list = jobs(QDir(QString::fromLocal8Bit(argv[1])));
  std::atomic<std::size_t> next = 0;
  std::atomic<bool> good = true;
  const auto work = [&] {
    for (std::size_t i = next++; i < list.size() && good; i = next++) {
      if (!run(list[i])) good = false;
    }
  };
  {
    std::vector<std::jthread> threads;
    for (unsigned i = 1; i < std::thread::hardware_concurrency(); ++i) threads.emplace_back(work);
    work();
  }
  return good ? 0 : 1;
}
