// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "formats/sony/ClipRecord.h"

namespace {

using namespace Sorvik::formats::sony;

struct RecordText {
  std::string counting = "tcFps='25'";
  std::string start = "00000000";
  std::string end = "24590000";  // 00:00:59:24
  std::string created = "2024-05-06T10:00:00+02:00";
  std::string frames = "1500";
  std::string rate = "25p";
};

ClipRecord Read(const RecordText& text) {
  const auto document = Sorvik::foundation::ParseXml(
      "<NonRealTimeMeta><TargetMaterial umidRef='" + std::string(48, '0') +
      "784B87FFFEBA9815'/><Duration value='" + text.frames + "'/><LtcChangeTable " + text.counting +
      "><LtcChange frameCount='0' value='" + text.start + "'/><LtcChange value='" + text.end +
      "' status='end'/></LtcChangeTable><CreationDate value='" + text.created +
      "'/><VideoFormat><VideoFrame videoCodec='AVC' formatFps='" + text.rate +
      "'/></VideoFormat></NonRealTimeMeta>");
  return document ? ClipRecord::FromRoot(document->Root()) : ClipRecord();
}

TEST(ClipRecord, CountsFramesOfEachTimecodeForm) {
  // The second number is that of the frame after the end of the first.
  struct Case {
    const char* why;
    const char* counting;
    const char* end;
    const char* next;
  };
  for (const Case& c :
       {Case{"plain", "tcFps='25'", "24590000", "00000100"},
        Case{"midnight", "tcFps='25'", "24595923", "00000000"},
        Case{"non-drop", "tcFps='30'", "29590000", "00000100"},
        Case{"drop", "tcFps='30'", "69590000", "42000100"},
        Case{"drop, tenth minute", "tcFps='30'", "69590900", "40001000"},
        Case{"drop, midnight", "tcFps='30'", "69595923", "40000000"},
        Case{"pairs, base 25", "tcFps='25' halfStep='true'", "24590080", "00000100"},
        Case{"pairs, drop", "tcFps='30' halfStep='true'", "69D90000", "42000100"}}) {
    const ClipRecord record = Read({.counting = c.counting, .start = c.next, .end = c.end});
    ASSERT_TRUE(record.start && record.end) << c.why;
    EXPECT_EQ((*record.end + 1) % record.framesPerDay, *record.start) << c.why;
  }
  for (const char* invalid :
       {"", "0000000", "25000000", "00600000", "00006000", "00000024", "0A000000", "xx000000"}) {
    EXPECT_FALSE(Read({.start = invalid}).start) << invalid;
  }
}

TEST(ClipRecord, ContinuesByCreationTimeInAnyZone) {
  const ClipRecord clip = Read({});
  EXPECT_DOUBLE_EQ(clip.seconds, 60);
  const auto next = [](const std::string& created) {
    return Read({.start = "00000100", .end = "24000100", .created = created, .frames = "25"});
  };
  for (const char* created :
       {"2024-05-06T10:01:00+02:00", "2024-05-06T08:01:01Z", "2024-05-06T03:31:00-04:30"}) {
    EXPECT_TRUE(Continues(clip, next(created))) << created;
  }
  for (const char* created : {"2024-05-06T10:01:02+02:00", "2024-05-06T10:01:00Z",
                              "2024-13-06T10:01:00Z", "yesterday", ""}) {
    EXPECT_FALSE(Continues(clip, next(created))) << created;
  }
  EXPECT_FALSE(Continues(clip, clip));
}

TEST(ClipRecord, IgnoresNumbersOutOfRange) {
  for (const char* rate : {"", "0p", "-25p", "nanp", "infp", "1e999p", "25"}) {
    EXPECT_EQ(Read({.frames = "25", .rate = rate}).seconds, 1) << "the timecode base: " << rate;
  }
  EXPECT_EQ(Read({.frames = "99999999999999"}).frames, 0u);
  EXPECT_EQ(DeviceOfUmid("060A"), "");
}

}  // namespace
