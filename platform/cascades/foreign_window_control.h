#pragma once

// Shows another producer's window, here the camera's viewfinder, found by window group and id.

#include <memory>

#include "platform/cascades/visual_node.h"
#include "platform/screen/screen.h"

Q_DECLARE_OPAQUE_POINTER(screen_window_t)

namespace bb::cascades {

/// The picture stands upright and whole in the item, whatever combination of window rotation, mirror and stream
/// rotation is set; see handset::stance_of and handset::place_of. A frame is converted once, when the scene graph asks
/// for it, and no frame is held in between. The z-order becomes the item's z: a negative one is behind the parent's
/// content.
class ForeignWindowControl : public Control {
  Q_OBJECT
  Q_PROPERTY(QString windowId READ windowId WRITE setWindowId NOTIFY windowIdChanged)
  Q_PROPERTY(bool bound READ isBound NOTIFY boundChanged)
  Q_PROPERTY(QString notice READ notice NOTIFY noticeChanged)
  Q_PROPERTY(QString hint READ hint NOTIFY hintChanged)
  Q_PROPERTY(QString trouble READ trouble NOTIFY troubleChanged)
  Q_PROPERTY(QString status READ status NOTIFY statusChanged)

 public:
  /// Which window properties the control keeps up to date by itself.
  enum WindowProperty { None = 0, Position = 1, Size = 2, Visibility = 4, SourcePosition = 8 };
  Q_DECLARE_FLAGS(WindowProperties, WindowProperty)

  explicit ForeignWindowControl(QQuickItem* parent = nullptr);
  ~ForeignWindowControl() override;

  /// The application's group, shared by all controls.
  QString windowGroup() const;
  QString windowId() const { return window_id_; }
  void setWindowId(const QString& id);
  /// Present from the start, so that properties can be set before a producer attaches.
  screen_window_t windowHandle() const;
  /// Whether a producer has posted.
  bool isBound() const { return bound_; }
  WindowProperties updatedProperties() const { return updated_properties_; }
  void setUpdatedProperties(WindowProperties properties) { updated_properties_ = properties; }
  /// The producer's message in place of, or over, the picture; may be empty.
  QString notice() const { return notice_; }
  /// A remark shown during the picture's first seconds; empty if none, and afterwards.
  QString hint() const { return hint_; }
  /// Why there is no picture from the camera; may be empty. The stage shows it, with a way to retry.
  QString trouble() const { return trouble_; }
  /// A short line for the picture's edge, while it applies; may be empty. Not drawn here.
  QString status() const { return status_; }

 Q_SIGNALS:
  void windowIdChanged();
  void boundChanged();
  void noticeChanged();
  void hintChanged();
  void troubleChanged();
  void statusChanged();
  /// A producer's first picture has arrived; emitted again after the producer has closed and another one posts.
  void windowAttached(screen_window_t window, const QString& group, const QString& id);
  void windowDetached(screen_window_t window, const QString& group, const QString& id);

 protected:
  QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;
  void geometryChange(const QRectF& geometry, const QRectF& old) override;

 private:
  struct Producer;
  struct Picture;

  void follow();
  void set_bound(bool bound);
  void set_notice(const QString& text);
  void set_hint(const QString& text);
  void set_trouble(const QString& text);
  void set_status(const QString& text);

  QString window_id_;
  bool bound_ = false;
  WindowProperties updated_properties_ = None;
  QString notice_;
  QString hint_;
  QString trouble_;
  QString status_;
  std::unique_ptr<Producer> producer_;
  std::unique_ptr<Picture> picture_;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(ForeignWindowControl::WindowProperties)

}  // namespace bb::cascades
