// Cards as an application opens them and as a user sees and closes them.

#include <gst/video/video.h>
#include <sys/stat.h>

#include <QElapsedTimer>
#include <QImage>
#include <QPointer>
#include <QThreadPool>
#include <array>
#include <set>

#include "platform/camera/viewfinder_slot.h"
#include "platform/cascades/application.h"
#include "platform/cascades/orientation.h"
#include "platform/cascades/stage.h"
#include "platform/sound/output.h"
#include "platform/system/film_picture.h"
#include "platform/system/film_player.h"
#include "platform/system/invoke.h"
#include "tests/system/made_film.h"
#include "tests/system/window_test.h"

using bb::cascades::Application;
using bb::system::InvokeManager;
using bb::system::InvokeRequest;
using handset::Frame;
using handset::Stage;

namespace {

constexpr char moving[] = "videotestsrc num-buffers=60 pattern=ball ! video/x-raw,width=320,height=240,framerate=30/1";
constexpr char picture_target[] = "sys.pictures.card.previewer";

using Colour = std::array<int, 3>;

/// Y, U and V in the middle of a frame.
Colour middle_of(const Frame& frame) {
  GstVideoFrame mapped;
  if (!frame || !handset::map_frame(frame, GST_MAP_READ, &mapped)) return {};
  const int x = GST_VIDEO_FRAME_WIDTH(&mapped) / 4 * 2;
  const int y = GST_VIDEO_FRAME_HEIGHT(&mapped) / 4 * 2;
  const auto* luma = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&mapped, 0));
  const auto* chroma = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&mapped, 1)) +
                       y / 2 * GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, 1) + x;
  const Colour colour = {luma[y * GST_VIDEO_FRAME_PLANE_STRIDE(&mapped, 0) + x], chroma[0], chroma[1]};
  gst_video_frame_unmap(&mapped);
  return colour;
}

class Cards : public WindowTest {
 protected:
  Cards() : manager(std::make_unique<InvokeManager>()) {
    // Films are silent but in time.
    handset::set_sound_output("none");
    QObject::connect(manager.get(), &InvokeManager::childCardDone,
                     [this](const bb::system::CardDoneMessage& message) { done << message.reason(); });
  }
  ~Cards() override {
    if (card()) QMetaObject::invokeMethod(card(), "close");
    EXPECT_TRUE(wait_until([] { return card() == nullptr; }));
    bb::cascades::OrientationSupport::instance()->turnTo(0);
  }

  static QObject* card() { return Stage::instance()->card(); }
  static QString message() { return card() ? card()->property("message").toString() : QString("no card"); }
  static int time(const char* property) { return card() ? card()->property(property).toInt() : -1; }
  /// Where the pictures of the open card go, or of the one that was open last.
  static std::shared_ptr<handset::ViewfinderSlot> slot() {
    static std::string window;
    if (card()) window = card()->property("windowId").toString().toStdString();
    return handset::viewfinder_slot("morvane", window);
  }
  static bool wait_frame() {
    return wait_until([] { return static_cast<bool>(slot()->latest()); });
  }

  bb::system::InvokeTargetReply* play(const std::string& path) {
    InvokeRequest request;
    request.setUri(("file://" + path).c_str());
    return manager->invoke(request);
  }
  bb::system::InvokeTargetReply* show(const std::string& path) {
    InvokeRequest request;
    request.setUri(QUrl::fromLocalFile(QString::fromStdString(path)));
    request.setTarget(picture_target);
    request.setAction("bb.action.VIEW");
    return manager->invoke(request);
  }
  /// A colour of the display, in the middle.
  static QColor shown() {
    const QImage display = Application::instance()->readDisplay();
    return display.pixelColor(display.width() / 2, display.height() / 2);
  }

  const TempDir folder;
  std::unique_ptr<InvokeManager> manager;
  QStringList done;
};

TEST_F(Cards, AFilmPlaysAndIsDoneAtItsEnd) {
  const std::string film = folder.file("a film.mp4");
  ASSERT_EQ(make_film(folder.file("film.mp4"), moving), "");
  rename(folder.file("film.mp4").c_str(), film.c_str());
  bb::system::InvokeTargetReply* const reply = play(film);
  ASSERT_NE(reply, nullptr);
  EXPECT_EQ(reply->parent(), manager.get());
  ASSERT_NE(card(), nullptr);
  EXPECT_EQ(card()->property("title"), "a film.mp4");
  std::set<std::uint64_t> serials;
  QElapsedTimer clock;
  ASSERT_TRUE(wait_frame()) << message().toStdString();
  clock.start();
  const auto kept = slot();
  EXPECT_TRUE(wait_until([&] {
    std::uint64_t serial = 0;
    const Frame frame = slot()->latest(&serial);
    if (frame) serials.insert(serial);
    return done.size() == 1;
  }));
  EXPECT_EQ(done, QStringList{"ended"});
  EXPECT_GT(serials.size(), 10U) << "the pictures move";
  EXPECT_GT(clock.elapsed(), 1500) << "two seconds of film are not rushed through";
  EXPECT_EQ(card(), nullptr);
  EXPECT_FALSE(kept->latest()) << "no picture stays behind";
}

TEST_F(Cards, PausesSeeksAndGoesOn) {
  ASSERT_EQ(make_film(folder.file("film.mp4"),
                      "videotestsrc num-buffers=300 pattern=ball ! "
                      "video/x-raw,width=160,height=120,framerate=30/1"),
            "");
  ASSERT_NE(play(folder.file("film.mp4")), nullptr);
  ASSERT_TRUE(wait_frame()) << message().toStdString();
  ASSERT_TRUE(wait_until([] { return time("duration") > 0; }));
  EXPECT_NEAR(time("duration"), 10000, 100);
  press(Qt::Key_Space, " ");
  EXPECT_FALSE(card()->property("playing").toBool());
  wait_for(400);
  const int stopped = time("position");
  wait_for(600);
  EXPECT_EQ(time("position"), stopped);

  const auto posted = [] { return slot()->status().posted; };
  const std::uint64_t before = posted();
  press(Qt::Key_Right);
  EXPECT_EQ(time("position"), std::min(stopped + 5000, 10000)) << "where it goes is shown at once";
  EXPECT_TRUE(wait_until([&] { return posted() > before; })) << "the new place is shown while it is paused";
  press(Qt::Key_Left);
  press(Qt::Key_Left);
  EXPECT_EQ(time("position"), 0) << "no film begins before its beginning";
  wait_for(300);
  const std::uint64_t at_start = posted();
  QMetaObject::invokeMethod(card(), "seek", Q_ARG(int, 20000));
  EXPECT_EQ(time("position"), time("duration"));
  EXPECT_TRUE(wait_until([&] { return posted() > at_start; })) << "the last picture is seen";
  QMetaObject::invokeMethod(card(), "seek", Q_ARG(int, 9000));
  press(Qt::Key_Space, " ");
  EXPECT_TRUE(wait_until([&] { return !done.isEmpty(); }, 8000)) << "one second is left of ten";
  EXPECT_EQ(done, QStringList{"ended"});
}

TEST_F(Cards, APlayerLetsGoWithinItsBound) {
  ASSERT_EQ(make_film(folder.file("film.mp4"), moving), "");
  const auto own_slot = handset::viewfinder_slot("morvane", "own");
  const auto letting_go = [](std::unique_ptr<handset::FilmPlayer> player) {
    QElapsedTimer clock;
    clock.start();
    player.reset();
    return clock.elapsed();
  };
  const auto player = [&] { return std::make_unique<handset::FilmPlayer>(folder.file("film.mp4"), own_slot); };
  EXPECT_LT(letting_go(player()), 200) << "while it opens";
  auto playing = player();
  ASSERT_TRUE(wait_until([&] { return static_cast<bool>(own_slot->latest()); }));
  playing->seek(1'500'000'000);
  EXPECT_LT(letting_go(std::move(playing)), 200) << "while it seeks";
  EXPECT_FALSE(own_slot->latest());
  const std::uint64_t posted = own_slot->status().posted;
  wait_for(300);
  EXPECT_EQ(own_slot->status().posted, posted);
}

TEST_F(Cards, EscClosesAndReportsOnce) {
  ASSERT_EQ(make_film(folder.file("film.mp4"), moving), "");
  ASSERT_NE(play(folder.file("film.mp4")), nullptr);
  ASSERT_TRUE(wait_frame());
  const auto kept = slot();
  press(Qt::Key_Escape);
  press(Qt::Key_Escape);
  EXPECT_TRUE(wait_until([&] { return !done.isEmpty(); }, 2000));
  wait_for(50);
  EXPECT_EQ(done, QStringList{"closed"});
  EXPECT_FALSE(kept->latest());
}

TEST_F(Cards, ASecondCardTakesTheFirstOnesPlace) {
  ASSERT_EQ(make_film(folder.file("film.mp4"), moving), "");
  ASSERT_NE(play(folder.file("film.mp4")), nullptr);
  ASSERT_TRUE(wait_frame());
  // Whoever opens a second card is not done.
  QPointer<QObject> first = card();
  ASSERT_NE(show(folder.file("none.png")), nullptr);
  EXPECT_EQ(done, QStringList());
  EXPECT_NE(card(), first);
  // Somebody else's card is another matter.
  bb::system::InvokeManager other;
  bb::system::InvokeRequest request;
  request.setUri(QUrl::fromLocalFile(QString::fromStdString(folder.file("other.png"))));
  ASSERT_NE(other.invoke(request), nullptr);
  EXPECT_EQ(done, QStringList{"replaced"});
  manager.reset();
  QMetaObject::invokeMethod(card(), "close");
  EXPECT_TRUE(wait_until([] { return card() == nullptr; })) << "a card closes without its manager";
  EXPECT_FALSE(first);
}

TEST_F(Cards, WhatIsNoFilmIsSaidSo) {
  write_file(folder.file("text.mp4"), "This is not a film.\nIt is a text.\n");
  write_file(folder.file("empty.mp4"), "");
  ASSERT_EQ(make_film(folder.file("film.mp4"), moving), "");
  write_file(folder.file("cut.mp4"), read_file(folder.file("film.mp4")).substr(0, 3000));
  ASSERT_EQ(mkfifo(folder.file("fifo.mp4").c_str(), 0600), 0);
  for (const char* name : {"none.mp4", "text.mp4", "empty.mp4", "cut.mp4", "fifo.mp4", ""}) {
    ASSERT_NE(play(folder.file(name)), nullptr) << name;
    EXPECT_TRUE(wait_until([] { return !message().isEmpty(); })) << name;
    EXPECT_TRUE(message().startsWith("This film cannot be played: ")) << name << ": " << message().toStdString();
    EXPECT_GT(message().size(), 32) << name;
    EXPECT_NE(card(), nullptr) << "the user has to read it";
    done.clear();
    press(Qt::Key_Escape);
    EXPECT_TRUE(wait_until([&] { return done == QStringList{"closed"}; })) << name;
  }
}

TEST_F(Cards, FilmsOfEveryRangeHaveTheSameColours) {
  const Colour red = {76, 85, 255};  // full-range BT.601
  for (const char* colorimetry : {"bt601", "bt709", "1:4:16:4"}) {
    const std::string film = folder.file("film.mp4");
    ASSERT_EQ(make_film(film,
                        "videotestsrc num-buffers=30 pattern=solid-color foreground-color=0xffff0000 ! "
                        "video/x-raw,format=BGRx,width=320,height=240,framerate=30/1 ! videoconvert ! "
                        "video/x-raw,format=I420,colorimetry=" +
                            std::string(colorimetry)),
              "");
    ASSERT_NE(play(film), nullptr);
    ASSERT_TRUE(wait_frame()) << message().toStdString();
    const Colour colour = middle_of(slot()->latest());
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(colour[i], red[i], 4) << colorimetry << " component " << i;
  }
}

TEST_F(Cards, AFilmWithSoundPlaysOnWhenTheDeviceFails) {
  const std::string film = folder.file("film.mp4");
  ASSERT_EQ(make_film(film, moving, "audiotestsrc num-buffers=86 samplesperbuffer=1024"), "");
  for (const char* output : {"none", "fakesink sync=true", "fakesink state-error=ready-to-paused"}) {
    handset::set_sound_output(output);
    done.clear();
    ASSERT_NE(play(film), nullptr);
    EXPECT_TRUE(wait_until([&] { return done == QStringList{"ended"}; })) << output << message().toStdString();
  }
}

/// The uppermost band of the test picture begins with grey at the left and ends with blue at the right.
bool bars_are_upright() {
  const QImage display = Application::instance()->readDisplay();
  const double scale = std::min(display.width() / 320.0, display.height() / 240.0);
  const auto at = [&](int x, int y) {
    return display.pixelColor(display.width() / 2 + static_cast<int>(x * scale),
                              display.height() / 2 + static_cast<int>(y * scale));
  };
  const QColor grey = at(-150, -60);
  const QColor blue = at(150, -60);
  return grey.red() > 120 && std::abs(grey.blue() - grey.red()) < 30 && blue.blue() > blue.red() + 80;
}

TEST_F(Cards, AFilmStaysUprightWhenTheHandsetTurns) {
  ASSERT_EQ(make_film(folder.file("film.mp4"),
                      "videotestsrc num-buffers=600 pattern=smpte ! "
                      "video/x-raw,width=320,height=240,framerate=30/1"),
            "");
  ASSERT_NE(play(folder.file("film.mp4")), nullptr);
  ASSERT_TRUE(wait_frame());
  for (const int direction : {90, 180, 270, 0}) {
    bb::cascades::OrientationSupport::instance()->turnTo(direction);
    EXPECT_TRUE(wait_until(bars_are_upright, 4000)) << direction;
  }
}

TEST_F(Cards, PicturesAreFittedAndDecodedByThemselves) {
  QImage wide(3000, 1000, QImage::Format_RGB32);
  wide.fill(Qt::green);
  for (const char* name : {"a.png", "b.jpg", "c.bmp"}) {
    ASSERT_TRUE(wide.save(QString::fromStdString(folder.file(name))));
    ASSERT_NE(show(folder.file(name)), nullptr);
    EXPECT_TRUE(wait_until([] { return !card()->property("image").value<QImage>().isNull(); })) << name;
    EXPECT_LE(card()->property("image").value<QImage>().width(), 2560);
    EXPECT_TRUE(wait_until([] { return shown().green() > 240 && shown().red() < 16; })) << name;
    EXPECT_EQ(message(), "");
  }
  // One that goes before its picture has been decoded.
  ASSERT_NE(show(folder.file("a.png")), nullptr);
  done.clear();
  QMetaObject::invokeMethod(card(), "close");
  EXPECT_TRUE(wait_until(
      [this] { return done == QStringList{"closed"} && QThreadPool::globalInstance()->activeThreadCount() == 0; }));
  QCoreApplication::processEvents();
  // A file without a target opens the card of its kind.
  ASSERT_NE(play(folder.file("a.png")), nullptr);
  EXPECT_TRUE(card()->property("image").isValid());

  write_file(folder.file("text.png"), "no picture");
  write_file(folder.file("other.svg"), "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>");
  write_file(folder.file("half.png"), read_file(folder.file("a.png")).substr(0, 200));
  for (const char* name : {"none.png", "text.png", "other.svg", "half.png", ""}) {
    ASSERT_NE(show(folder.file(name)), nullptr) << name;
    EXPECT_TRUE(wait_until([] { return !message().isEmpty(); })) << name;
    EXPECT_TRUE(message().startsWith("This picture cannot be shown: ")) << message().toStdString();
  }
}

TEST_F(Cards, RequestsThatNobodyServesAreRefusedInOneLine) {
  InvokeRequest request;
  request.setUri(QUrl("file:///tmp/a.png"));
  request.setTarget("sys.browser");
  EXPECT_EQ(errors_of([&] { EXPECT_EQ(manager->invoke(request), nullptr); }),
            "cannot open a card: there is no such target: sys.browser\n");
  request.setTarget({});
  request.setUri("http://example.invalid/v.mp4");
  EXPECT_EQ(errors_of([&] { EXPECT_EQ(manager->invoke(request), nullptr); }),
            "cannot open a card: this is no file URI: http://example.invalid/v.mp4\n");
  EXPECT_EQ(card(), nullptr);
}

TEST(InvokeRequests, APathMayHoldWhatUrisEncode) {
  InvokeRequest request;
  request.setUri("file:///data/50% off #1 ä?.mp4");
  EXPECT_EQ(request.uri().toLocalFile(), "/data/50% off #1 ä?.mp4");
  request.setUri("file:///data/v.mp4");
  EXPECT_EQ(request.uri(), QUrl("file:///data/v.mp4"));
}

TEST(FilmPictures, ArePutIntoSquarePixelsAndEvenNumbers) {
  using handset::PictureSize;
  using handset::shown_size;
  EXPECT_EQ(shown_size(1280, 720, 1, 1, 1920), (PictureSize{1280, 720}));
  EXPECT_EQ(shown_size(853, 481, 1, 1, 1920), (PictureSize{854, 482}));
  EXPECT_EQ(shown_size(720, 576, 16, 11, 1920), (PictureSize{1048, 576}));
  EXPECT_EQ(shown_size(720, 480, 8, 9, 1920), (PictureSize{720, 540}));
  EXPECT_EQ(shown_size(2160, 3840, 1, 1, 1920), (PictureSize{1080, 1920}));
  EXPECT_EQ(shown_size(10000, 3, 1, 1, 1920), (PictureSize{1920, 2}));
}

}  // namespace
