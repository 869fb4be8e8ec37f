#include "platform/cascades/controls.h"

namespace bb::cascades {

Label::Label(QQuickItem* parent) : Control(parent) {}

void Label::setText(const QString& text) {
  if (text_ == text) return;
  text_ = text;
  Q_EMIT textChanged();
}

ImageView::ImageView(QQuickItem* parent) : Control(parent) {}

void ImageView::setImageSource(const QUrl& source) {
  if (image_source_ == source) return;
  image_source_ = source;
  Q_EMIT imageSourceChanged();
}

ImageButton::ImageButton(QQuickItem* parent) : Control(parent) {}

void ImageButton::setDefaultImageSource(const QUrl& source) {
  if (default_image_source_ == source) return;
  default_image_source_ = source;
  Q_EMIT imagesChanged();
}

void ImageButton::setPressedImageSource(const QUrl& source) {
  if (pressed_image_source_ == source) return;
  pressed_image_source_ = source;
  Q_EMIT imagesChanged();
}

CheckBox::CheckBox(QQuickItem* parent) : Control(parent) {}

void CheckBox::setText(const QString& text) {
  if (text_ == text) return;
  text_ = text;
  Q_EMIT textChanged();
}

void CheckBox::setChecked(bool checked) {
  if (checked_ == checked) return;
  checked_ = checked;
  Q_EMIT checkedChanged(checked_);
}

DropDown::DropDown(QQuickItem* parent) : Control(parent) {}

void DropDown::setTitle(const QString& title) {
  if (title_ == title) return;
  title_ = title;
  Q_EMIT titleChanged();
}

void DropDown::setOptions(const QStringList& options) {
  if (options_ == options) return;
  options_ = options;
  Q_EMIT optionsChanged();
  setSelectedIndex(selected_index_);
}

void DropDown::setSelectedIndex(int index) {
  if (index < 0 || index >= options_.size()) index = -1;
  if (selected_index_ == index) return;
  selected_index_ = index;
  Q_EMIT selectedIndexChanged(selected_index_);
}

}  // namespace bb::cascades
