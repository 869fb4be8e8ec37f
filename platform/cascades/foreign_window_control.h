#pragma once

// Shows the window of another producer, here the camera's viewfinder, found by window group and id.

#include <memory>

#include "platform/cascades/visual_node.h"
#include "platform/screen/screen.h"

Q_DECLARE_OPAQUE_POINTER(screen_window_t)

namespace bb::cascades {

/// The picture stands upright and whole in the item, whatever the window's rotation and mirror are set to together with
/// the stream's rotation; see handset::stance_of and handset::place_of. A frame is converted when the scene graph asks
/// for it, once, and no frame is held between. The z-order becomes the item's z: a negative one is behind what its
/// parent shows.
class ForeignWindowControl : public Control {
  Q_OBJECT
  Q_PROPERTY(QString windowId READ windowId WRITE setWindowId NOTIFY windowIdChanged)
  Q_PROPERTY(bool bound READ isBound NOTIFY boundChanged)
  Q_PROPERTY(QString notice READ notice NOTIFY noticeChanged)
  Q_PROPERTY(QString hint READ hint NOTIFY hintChanged)
  Q_PROPERTY(QString trouble READ trouble NOTIFY troubleChanged)
  Q_PROPERTY(QString status READ status NOTIFY statusChanged)

 public:
  /// Which properties of the window the control keeps up to date by itself.
  enum WindowProperty { None = 0, Position = 1, Size = 2, Visibility = 4, SourcePosition = 8 };
  Q_DECLARE_FLAGS(WindowProperties, WindowProperty)

  explicit ForeignWindowControl(QQuickItem* parent = nullptr);
  ~ForeignWindowControl() override;

  /// The application's group; the same for all controls.
  QString windowGroup() const;
  QString windowId() const { return window_id_; }
  void setWindowId(const QString& id);
  /// There from the start, so that properties can be set before a producer has attached.
  screen_window_t windowHandle() const;
  /// A producer has posted.
  bool isBound() const { return bound_; }
  WindowProperties updatedProperties() const { return updated_properties_; }
  void setUpdatedProperties(WindowProperties properties) { updated_properties_ = properties; }
  /// What the producer says instead of, or over, the picture; empty for nothing.
  QString notice() const { return notice_; }
  /// A remark on the picture that is there for its first seconds; empty for none, and after them.
  QString hint() const { return hint_; }
  /// Why there is no camera's picture; empty for nothing. The stage shows it, with a way to try again.
  QString trouble() const { return trouble_; }
  /// A short line for the picture's edge, as long as it holds; empty for none. Not drawn here.
  QString status() const { return status_; }

 Q_SIGNALS:
  void windowIdChanged();
  void boundChanged();
  void noticeChanged();
  void hintChanged();
  void troubleChanged();
  void statusChanged();
  /// The first picture of a producer is there; emitted anew after the producer has closed and another one posts.
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
