#pragma once

// Labels, images, buttons, check boxes and drop-downs. Image URLs may be asset:///…

#include <QUrl>

#include "platform/cascades/visual_node.h"

namespace bb::cascades {

class Label : public Control {
  Q_OBJECT
  Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)

 public:
  explicit Label(QQuickItem* parent = nullptr);
  QString text() const { return text_; }
  void setText(const QString& text);

 Q_SIGNALS:
  void textChanged();

 private:
  QString text_;
};

class ImageView : public Control {
  Q_OBJECT
  Q_PROPERTY(QUrl imageSource READ imageSource WRITE setImageSource NOTIFY imageSourceChanged)

 public:
  explicit ImageView(QQuickItem* parent = nullptr);
  QUrl imageSource() const { return image_source_; }
  void setImageSource(const QUrl& source);
  void setImage(const QUrl& source) { setImageSource(source); }

 Q_SIGNALS:
  void imageSourceChanged();

 private:
  QUrl image_source_;
};

class ImageButton : public Control {
  Q_OBJECT
  Q_PROPERTY(QUrl defaultImageSource READ defaultImageSource WRITE setDefaultImageSource NOTIFY imagesChanged)
  Q_PROPERTY(QUrl pressedImageSource READ pressedImageSource WRITE setPressedImageSource NOTIFY imagesChanged)

 public:
  explicit ImageButton(QQuickItem* parent = nullptr);
  QUrl defaultImageSource() const { return default_image_source_; }
  void setDefaultImageSource(const QUrl& source);
  QUrl pressedImageSource() const { return pressed_image_source_; }
  void setPressedImageSource(const QUrl& source);

 Q_SIGNALS:
  void imagesChanged();
  void clicked();

 private:
  QUrl default_image_source_;
  QUrl pressed_image_source_;
};

class CheckBox : public Control {
  Q_OBJECT
  Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
  Q_PROPERTY(bool checked READ isChecked WRITE setChecked NOTIFY checkedChanged)

 public:
  explicit CheckBox(QQuickItem* parent = nullptr);
  QString text() const { return text_; }
  void setText(const QString& text);
  bool isChecked() const { return checked_; }
  void setChecked(bool checked);

 Q_SIGNALS:
  void textChanged();
  void checkedChanged(bool checked);

 private:
  QString text_;
  bool checked_ = false;
};

/// One choice among several texts.
class DropDown : public Control {
  Q_OBJECT
  Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY titleChanged)
  Q_PROPERTY(QStringList options READ options WRITE setOptions NOTIFY optionsChanged)
  Q_PROPERTY(int selectedIndex READ selectedIndex WRITE setSelectedIndex NOTIFY selectedIndexChanged)

 public:
  explicit DropDown(QQuickItem* parent = nullptr);
  QString title() const { return title_; }
  void setTitle(const QString& title);
  QStringList options() const { return options_; }
  void setOptions(const QStringList& options);
  /// -1 if nothing is selected.
  int selectedIndex() const { return selected_index_; }
  /// An index outside the options selects nothing.
  void setSelectedIndex(int index);

 Q_SIGNALS:
  void titleChanged();
  void optionsChanged();
  void selectedIndexChanged(int selectedIndex);

 private:
  QString title_;
  QStringList options_;
  int selected_index_ = -1;
};

}  // namespace bb::cascades
