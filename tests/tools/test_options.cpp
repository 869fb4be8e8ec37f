#include <gtest/gtest.h>

#include "tools/record/options.h"

namespace {

std::string parse(std::vector<std::string> words, record::Options* options) {
  words.insert(words.begin(), "morvane-record");
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  return record::parse_options(static_cast<int>(words.size()), argv.data(), options);
}

TEST(RecordOptions, AreReadInAnyOrder) {
  record::Options o;
  EXPECT_EQ(parse({"out.mp4", "--source", "clip:/a b.mp4", "--size=1280x720", "--filter", "11", "--color", "0,255",
                   "--tolerance", "0.25", "--seconds", "2.5", "--microphone", "none", "--unpaced"},
                  &o),
            "");
  EXPECT_EQ(o.output, "out.mp4");
  EXPECT_EQ(o.source, "clip:/a b.mp4");
  EXPECT_EQ(o.width, 1280U);
  EXPECT_EQ(o.height, 720U);
  EXPECT_EQ(o.filter, 11);
  EXPECT_EQ(o.v, 255);
  EXPECT_FLOAT_EQ(o.tolerance, 0.25F);
  EXPECT_DOUBLE_EQ(o.seconds, 2.5);
  EXPECT_TRUE(o.unpaced);
  record::Options over;
  EXPECT_EQ(parse({"--texture", "Fog White", "--position", "6", "--fullscreen", "--own-colors", "--stamp", "8",
                   "--stamp-color", "0", "--stamp-position", "3", "x.mp4"},
                  &over),
            "");
  EXPECT_EQ(over.texture, "Fog White");
  EXPECT_EQ(over.position, 6);
  EXPECT_TRUE(over.fill_frame && over.own_colors);
  EXPECT_EQ(over.stamp, 8);
  EXPECT_EQ(over.stamp_color, 0);
  EXPECT_EQ(over.stamp_position, 3);
  record::Options none;
  EXPECT_EQ(parse({"--filter", "-1", "x.mp4"}, &none), "");
  EXPECT_EQ(none.filter, -1);
}

TEST(RecordOptions, EachMistakeIsNamed) {
  const struct {
    std::vector<std::string> words;
    const char* complaint;
  } cases[] = {
      {{}, "no output file named"},
      {{"a.mp4", "b.mp4"}, "unexpected argument b.mp4"},
      {{"--colour", "1,2", "a.mp4"}, "unknown option --colour"},
      {{"-xy", "a.mp4"}, "unknown option -x"},
      {{"--list", "-q"}, "unknown option -q"},
      {{"--unpaced=1", "a.mp4"}, "option --unpaced takes no value"},
      {{"--filter"}, "option --filter needs a value"},
      {{"--filter", "12", "a.mp4"}, "bad value \"12\" for --filter"},
      {{"--filter", "5x", "a.mp4"}, "bad value \"5x\" for --filter"},
      {{"--size", "641x480", "a.mp4"}, "bad value \"641x480\" for --size"},
      {{"--size", "0x0", "a.mp4"}, "bad value \"0x0\" for --size"},
      {{"--size", "99999x2", "a.mp4"}, "bad value \"99999x2\" for --size"},
      {{"--color", "256,0", "a.mp4"}, "bad value \"256,0\" for --color"},
      {{"--tolerance", "1", "a.mp4"}, "bad value \"1\" for --tolerance"},
      {{"--tolerance", "nan", "a.mp4"}, "bad value \"nan\" for --tolerance"},
      {{"--seconds", "0", "a.mp4"}, "bad value \"0\" for --seconds"},
      {{"--microphone", "", "a.mp4"}, "bad value \"\" for --microphone"},
      {{"--position", "7", "a.mp4"}, "bad value \"7\" for --position"},
      {{"--stamp", "0", "a.mp4"}, "bad value \"0\" for --stamp"},
      {{"--stamp-color", "6", "a.mp4"}, "bad value \"6\" for --stamp-color"},
      {{"--stamp-position", "-1", "a.mp4"}, "bad value \"-1\" for --stamp-position"},
      {{"--texture", "", "a.mp4"}, "bad value \"\" for --texture"},
      {{"--unpaced", "a.mp4"}, "--unpaced needs a clip"},
  };
  for (const auto& c : cases) {
    record::Options options;
    EXPECT_EQ(parse(c.words, &options), c.complaint);
  }
}

TEST(RecordOptions, HelpNeedsNoOutput) {
  record::Options options;
  EXPECT_EQ(parse({"--help"}, &options), "");
  EXPECT_EQ(options.action, record::Options::Action::help);
  EXPECT_EQ(parse({"--list"}, &options), "");
  EXPECT_EQ(options.action, record::Options::Action::list);
}

}  // namespace
