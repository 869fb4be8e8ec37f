#pragma once

#include <QObject>
#include <QSize>
#include <QString>

/// Saves the picture of the application's main window as a PNG file of 768 x 1280 pixels. UI thread.
class AppShot : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString saveFolder READ saveFolder WRITE setSaveFolder NOTIFY saveFolderChanged)

 public:
  /// Saves into "/shared/camera/"; does not create it.
  explicit AppShot(QObject* parent = nullptr);

  QString saveFolder() const { return mSaveFolder; }

  /// Captures into the file named by the working directory, the save folder and `fileName`, joined as they are; an
  /// existing file is replaced whole. What cannot be written is one line on the error stream.
  /// @return the file's path, whether it was written or not
  Q_INVOKABLE QString captureScreen(QString fileName);

  /// @param pixels  32-bit words 0xAARRGGBB, of which the top byte is not used; rows `stride` bytes apart, of which a
  ///                row's `size.width() * 4` bytes at most are read
  /// @return whether the file was written; one that could not be leaves nothing behind
  bool saveImageBufferToFile(QString path, QSize size, unsigned char* pixels, int stride);

 public Q_SLOTS:
  /// The folder is relative to the working directory and begins and ends with a slash. It is created when it changes.
  void setSaveFolder(QString saveFolder);

 Q_SIGNALS:
  void saveFolderChanged(QString saveFolder);

 private:
  static const char* const mDefaultFolder;
  QString mSaveFolder;
};
