#include "platform/cascades/foreign_window_control.h"

#include <QElapsedTimer>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QTimer>
#include <atomic>
#include <cmath>

#include "platform/camera/viewfinder_slot.h"
#include "platform/cascades/orientation.h"
#include "platform/cascades/stage.h"
#include "platform/cascades/viewfinder_node.h"
#include "platform/cascades/viewfinder_notice.h"
#include "platform/cascades/viewfinder_picture.h"
#include "platform/screen/screen_window.h"

namespace bb::cascades {
namespace {

using handset::Nv12;
using handset::Stance;
using handset::ViewfinderNode;

constexpr char group_name[] = "morvane";
constexpr int hint_time_ms = 6000;
constexpr int backdrop_period_ms = 150;
/// Vertical position of the hint's center, as a share of the item's height.
constexpr double hint_place = 0.14;
/// A picture's middle is what its user looks at.
constexpr double notice_place = 0.24;

/// Maps the item's coordinates to the window's pixels.
class PixelGrid {
 public:
  PixelGrid(const QQuickItem& item, double ratio)
      : to_pixels_(item.itemTransform(nullptr, nullptr) * QTransform::fromScale(ratio, ratio)) {}

  /// Rotated or sheared items share no rectangles with the pixels.
  bool is_even() const {
    return to_pixels_.type() <= QTransform::TxScale && to_pixels_.m11() > 0 && to_pixels_.m22() > 0;
  }
  double scale() const { return std::hypot(to_pixels_.m11(), to_pixels_.m12()); }
  /// Pixels covered by an area.
  QSize size_of(const QRectF& area) const {
    const QSizeF size = is_even() ? to_pixels_.mapRect(area).size() : area.size() * scale();
    return size.toSize().expandedTo(QSize(1, 1)).boundedTo(QSize(8192, 8192));
  }
  /// The nearest area with edges between pixels.
  QRectF snapped(const QRectF& area) const {
    if (!is_even()) return area;
    const QRectF pixels = to_pixels_.mapRect(area);
    return to_pixels_.inverted().mapRect(QRectF(QPointF(pixels.topLeft().toPoint()), QSizeF(size_of(area))));
  }

 private:
  QTransform to_pixels_;
};

/// Maps a frame's pixels for its own lifetime.
class MappedFrame {
 public:
  explicit MappedFrame(const handset::Frame& frame) : mapped_(handset::map_frame(frame, GST_MAP_READ, &video_)) {}
  MappedFrame(const MappedFrame&) = delete;
  MappedFrame& operator=(const MappedFrame&) = delete;
  ~MappedFrame() {
    if (mapped_) gst_video_frame_unmap(&video_);
  }

  explicit operator bool() const { return mapped_; }
  Nv12 picture() const {
    return {static_cast<const std::uint8_t*>(video_.data[0]),
            video_.info.stride[0],
            static_cast<const std::uint8_t*>(video_.data[1]),
            video_.info.stride[1],
            GST_VIDEO_INFO_WIDTH(&video_.info),
            GST_VIDEO_INFO_HEIGHT(&video_.info)};
  }

 private:
  GstVideoFrame video_;
  bool mapped_;
};

}  // namespace

/// The producer's end, and what is known of it. UI thread.
struct ForeignWindowControl::Producer {
  screen_window_s window;
  std::shared_ptr<handset::ViewfinderSlot> slot;
  handset::ViewfinderStatus seen;
  /// A change has been announced but not handled; later ones need no further announcement.
  std::atomic<bool> announced{false};
  QTimer hint_timer;
};

/// What was drawn last, and how to draw next. Render thread, while the UI thread waits.
struct ForeignWindowControl::Picture {
  struct Text {
    QString text;
    QSizeF item;
    double scale = 0;
    bool operator==(const Text&) const = default;
  };

  void show(ViewfinderNode* node, const handset::Frame& frame, std::uint64_t serial, Stance stance, const QRectF& item,
            const PixelGrid& grid, bool software);
  void show_backdrop(ViewfinderNode* node, const Nv12& frame, Stance stance, const QRectF& item, const PixelGrid& grid);
  void show_text(ViewfinderNode* node, ViewfinderNode::Layer layer, const QString& text, QPointF middle,
                 const QRectF& item, const PixelGrid& grid);

  handset::PictureConverter converter;
  handset::Backdrop backdrop;
  QElapsedTimer backdrop_age;
  QSize backdrop_size;
  std::uint64_t serial = 0;
  QSize size;
  Stance stance{};
  std::array<Text, 2> texts;
};

void ForeignWindowControl::Picture::show(ViewfinderNode* node, const handset::Frame& frame, std::uint64_t new_serial,
                                         Stance new_stance, const QRectF& item, const PixelGrid& grid, bool software) {
  const MappedFrame mapped(frame);
  if (!mapped) return;
  const Nv12 nv12 = mapped.picture();
  const QSize turned = new_stance.lies() ? QSize(nv12.height, nv12.width) : QSize(nv12.width, nv12.height);
  const QRectF place = handset::place_of(turned, item.size()).translated(item.topLeft());
  const QRectF area = grid.snapped(place);
  const QSize pixels = grid.size_of(place);
  // Without a GPU enlarging is far cheaper here than in the scene graph; with one it is the other way around.
  const QSize wanted = software ? pixels : pixels.boundedTo(turned);

  const bool filled = place.size() == item.size();
  if (filled) node->set_image(ViewfinderNode::backdrop, {}, {}, false);
  const bool same = new_serial == serial && wanted == size && new_stance == stance;
  if (same && node->has_image(ViewfinderNode::picture)) {
    node->move_image(ViewfinderNode::picture, area);
    return;
  }
  if (!filled) show_backdrop(node, nv12, new_stance, item, grid);
  const QImage image = converter.convert(nv12, wanted, new_stance);
  node->set_image(ViewfinderNode::picture, image, area, wanted != pixels || !grid.is_even());
  serial = new_serial;
  size = wanted;
  stance = new_stance;
}

void ForeignWindowControl::Picture::show_backdrop(ViewfinderNode* node, const Nv12& frame, Stance new_stance,
                                                  const QRectF& item, const PixelGrid& grid) {
  const QSize pixels = grid.size_of(item);
  const bool there = node->has_image(ViewfinderNode::backdrop);
  if (!there) backdrop.forget();
  if (there && pixels == backdrop_size && stance == new_stance && backdrop_age.elapsed() < backdrop_period_ms) return;
  node->set_image(ViewfinderNode::backdrop, backdrop.follow(frame, pixels, new_stance), grid.snapped(item), false);
  backdrop_size = pixels;
  backdrop_age.start();
}

void ForeignWindowControl::Picture::show_text(ViewfinderNode* node, ViewfinderNode::Layer layer, const QString& text,
                                              QPointF middle, const QRectF& item, const PixelGrid& grid) {
  Text& shown = texts[layer == ViewfinderNode::notice ? 0 : 1];
  const Text wanted{text, item.size(), grid.scale()};
  if (shown == wanted && node->has_image(layer) == !text.isEmpty()) return;
  const auto kind = layer == ViewfinderNode::notice ? handset::NoticeKind::notice : handset::NoticeKind::hint;
  const QImage image = handset::paint_notice(text, kind, item.size(), grid.scale());
  QRectF area(QPointF(0, 0), QSizeF(image.size()) / grid.scale());
  area.moveCenter(middle);
  node->set_image(layer, image, grid.snapped(area), !grid.is_even());
  shown = wanted;
}

// --- item -------------------------------------------------------------------------------------

ForeignWindowControl::ForeignWindowControl(QQuickItem* parent)
    : Control(parent), producer_(std::make_unique<Producer>()), picture_(std::make_unique<Picture>()) {
  setFlag(ItemHasContents);
  screen_create_context(&producer_->window.context, 0);
  producer_->window.changed = [this] {
    setZ(producer_->window.zorder);
    update();
  };
  producer_->hint_timer.setSingleShot(true);
  producer_->hint_timer.setInterval(hint_time_ms);
  connect(&producer_->hint_timer, &QTimer::timeout, this, [this] { set_hint({}); });
  connect(OrientationSupport::instance(), &OrientationSupport::displayDirectionChanged, this, [this] { update(); });
}

ForeignWindowControl::~ForeignWindowControl() {
  if (producer_->slot) producer_->slot->set_listener({});
  screen_destroy_context(producer_->window.context);
}

QString ForeignWindowControl::windowGroup() const {
  return QLatin1String(group_name);
}

screen_window_t ForeignWindowControl::windowHandle() const {
  return &producer_->window;
}

void ForeignWindowControl::setWindowId(const QString& id) {
  if (window_id_ == id) return;
  if (producer_->slot) producer_->slot->set_listener({});
  set_bound(false);
  set_notice({});
  set_trouble({});
  set_status({});
  producer_->slot.reset();
  window_id_ = id;
  if (!id.isEmpty()) {
    producer_->slot = handset::viewfinder_slot(group_name, id.toStdString());
    producer_->slot->set_listener([this] {
      if (!producer_->announced.exchange(true))
        QMetaObject::invokeMethod(
            this, [this] { follow(); }, Qt::QueuedConnection);
    });
    producer_->seen = producer_->slot->status();
    QMetaObject::invokeMethod(
        this, [this] { follow(); }, Qt::QueuedConnection);  // it may be running
  }
  update();
  Q_EMIT windowIdChanged();
}

/// Processes what the producer has done since the last time.
void ForeignWindowControl::follow() {
  producer_->announced = false;
  if (!producer_->slot) return;
  const handset::ViewfinderStatus status = producer_->slot->status();
  // A producer may have closed and another one posted between two looks.
  if (!status.picture || status.cleared != producer_->seen.cleared) set_bound(false);
  producer_->seen = status;
  set_notice(QString::fromStdString(status.notice));
  set_trouble(QString::fromStdString(status.trouble));
  set_status(QString::fromStdString(status.status));
  if (status.picture && !bound_) {
    set_hint(QString::fromStdString(status.hint));
    set_bound(true);
  }
  update();
}

void ForeignWindowControl::set_bound(bool bound) {
  if (bound_ == bound) return;
  bound_ = bound;
  if (!bound) set_hint({});
  Q_EMIT boundChanged();
  if (bound) {
    Q_EMIT windowAttached(&producer_->window, windowGroup(), window_id_);
  } else {
    Q_EMIT windowDetached(&producer_->window, windowGroup(), window_id_);
  }
}

void ForeignWindowControl::set_notice(const QString& text) {
  if (notice_ == text) return;
  notice_ = text;
  Q_EMIT noticeChanged();
  update();
}

void ForeignWindowControl::set_hint(const QString& text) {
  if (hint_ == text) return;
  hint_ = text;
  if (!text.isEmpty()) producer_->hint_timer.start();
  Q_EMIT hintChanged();
  update();
}

void ForeignWindowControl::set_trouble(const QString& text) {
  if (trouble_ == text) return;
  trouble_ = text;
  handset::Stage::instance()->set_trouble(text);
  Q_EMIT troubleChanged();
}

void ForeignWindowControl::set_status(const QString& text) {
  if (status_ == text) return;
  status_ = text;
  Q_EMIT statusChanged();
}

QSGNode* ForeignWindowControl::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
  const QRectF item = boundingRect();
  if (item.isEmpty()) {
    delete old;
    return nullptr;
  }
  auto* node = old != nullptr ? static_cast<ViewfinderNode*>(old) : new ViewfinderNode(window());
  const PixelGrid grid(*this, window()->effectiveDevicePixelRatio());
  node->set_ground(item);

  const screen_window_s& properties = producer_->window;
  std::uint64_t serial = 0;
  const handset::Frame frame = bound_ && producer_->slot ? producer_->slot->latest(&serial) : handset::Frame{};
  if (frame) {
    const Stance stance = handset::stance_of(properties.rotation, properties.mirror, producer_->slot->status().rotation,
                                             OrientationSupport::instance()->displayDirection());
    const bool software = window()->rendererInterface()->graphicsApi() == QSGRendererInterface::Software;
    picture_->show(node, frame, serial, stance, item, grid, software);
  } else {
    node->set_image(ViewfinderNode::picture, {}, {}, false);
    node->set_image(ViewfinderNode::backdrop, {}, {}, false);
  }
  const double notice_height = frame ? item.height() * notice_place : item.center().y();
  picture_->show_text(node, ViewfinderNode::notice, notice_, {item.center().x(), notice_height}, item, grid);
  picture_->show_text(node, ViewfinderNode::hint, hint_, {item.center().x(), item.height() * hint_place}, item, grid);
  return node;
}

void ForeignWindowControl::itemChange(ItemChange change, const ItemChangeData& data) {
  if (change == ItemSceneChange || change == ItemVisibleHasChanged || change == ItemDevicePixelRatioHasChanged)
    update();
  Control::itemChange(change, data);
}

void ForeignWindowControl::geometryChange(const QRectF& geometry, const QRectF& old) {
  Control::geometryChange(geometry, old);
  update();
}

}  // namespace bb::cascades
