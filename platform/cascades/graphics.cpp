#include "platform/cascades/graphics.h"

#include <QDir>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QQuickWindow>
#include <QSGRendererInterface>

namespace handset {

namespace {

/// Drawn by the CPU: the software scene graph does the same with less memory and fewer threads.
bool is_rasterizer(const QByteArray& renderer) {
  for (const char* name : {"llvmpipe", "softpipe", "swrast", "Software Rasterizer", "SwiftShader"}) {
    if (renderer.contains(name)) return true;
  }
  return renderer.isEmpty();
}

/// Probing OpenGL without hardware for it loads a rasterizer, whose 55 MB stay for the life of the process.
bool has_gpu_device() {
  const QDir devices(QStringLiteral("/dev"));
  return !QDir(QStringLiteral("/dev/dri")).entryList({QStringLiteral("renderD*")}, QDir::System).isEmpty() ||
         !devices
              .entryList({QStringLiteral("nvidia[0-9]*"), QStringLiteral("mali*"), QStringLiteral("dxg")}, QDir::System)
              .isEmpty();
}

bool has_gpu() {
  if (!has_gpu_device()) return false;
  QOpenGLContext context;
  if (!context.create()) return false;
  QOffscreenSurface surface;
  surface.setFormat(context.format());
  surface.create();
  if (!surface.isValid() || !context.makeCurrent(&surface)) return false;
  const auto* renderer = reinterpret_cast<const char*>(context.functions()->glGetString(GL_RENDERER));
  const bool usable = !is_rasterizer(renderer);
  context.doneCurrent();
  return usable;
}

}  // namespace

void choose_graphics() {
  if (qEnvironmentVariableIsSet("QT_QUICK_BACKEND")) return;
  // The probe's warnings only repeat its outcome: no GPU.
  const QtMessageHandler handler = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
  const bool gpu = has_gpu();
  qInstallMessageHandler(handler);
  if (!gpu) QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

}  // namespace handset
