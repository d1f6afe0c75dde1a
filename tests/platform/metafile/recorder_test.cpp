#include "platform/metafile/recorder.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/platform/metafile/drawing.h"

namespace {

using platform::Box;
using platform::MetafileRecorder;
using platform::Record;
using platform::RecordReader;
using test_support::OwnedMetafile;

std::vector<std::uint32_t> TypesOf(const platform::Metafile& metafile) {
  std::vector<std::uint32_t> types;
  RecordReader reader(metafile.records);
  Record record;
  while (reader.Next(record)) types.push_back(record.Type());
  EXPECT_EQ(reader.Position(), metafile.records.size());
  return types;
}

TEST(MetafileRecorder, KeepsTheHeaderUpToDate) {
  MetafileRecorder recorder(100);
  const std::uint32_t pen = recorder.CreatePen(platform::kPenSolid, 1, 0);
  recorder.CreateBrush(platform::kBrushSolid, 0);
  recorder.SelectObject(pen);
  recorder.Rectangle({10, 20, 110, 70});
  recorder.LineTo(-5, 30);
  const OwnedMetafile metafile(recorder.Close());

  const Record header(metafile->records);
  EXPECT_EQ(header.Long(0), 1U);
  EXPECT_EQ(header.Long(40), 0x464D4520U);
  EXPECT_EQ(header.Long(48), metafile->records.size());
  EXPECT_EQ(header.Long(52), 7U) << "records";
  EXPECT_EQ(header.Word(56), 3U) << "handles, that of the metafile with them";
  const Box bounds{header.SignedLong(8), header.SignedLong(12), header.SignedLong(16), header.SignedLong(20)};
  EXPECT_EQ(bounds.left, -5);
  EXPECT_EQ(bounds.top, 0);
  EXPECT_EQ(bounds.right, 110);
  EXPECT_EQ(bounds.bottom, 70);
  // Without one of its own the frame is the bounds, in 0.01 mm: 25.4 to a unit.
  platform::EnhMetaHeader frame;
  ASSERT_TRUE(platform::GetEnhMetaFileHeader(metafile.get(), frame));
  EXPECT_EQ(frame.frameLeft, -127);
  EXPECT_EQ(frame.frameRight, -127 + 2921);
  EXPECT_EQ(frame.frameBottom, 1778);
  EXPECT_EQ(header.Long(72), 1000U) << "device";
  EXPECT_EQ(header.Long(80), 254U) << "its millimetres";
}

TEST(MetafileRecorder, FramesKeepTheirPixelsAtTheirResolution) {
  for (const std::int32_t side : {1, 2, 3, 7, 71, 100, 333, 1024, 65535}) {
    MetafileRecorder recorder(72);
    recorder.SetFrame({0, 0, side, side});
    const OwnedMetafile metafile(recorder.Close());
    platform::EnhMetaHeader frame;
    ASSERT_TRUE(platform::GetEnhMetaFileHeader(metafile.get(), frame));
    EXPECT_EQ(static_cast<std::int32_t>((frame.frameRight - frame.frameLeft) * 72.0 / 2540.0), side);
  }
}

TEST(MetafileRecorder, GivesTheLowestFreeHandle) {
  MetafileRecorder recorder(72);
  EXPECT_EQ(recorder.CreatePen(platform::kPenSolid, 1, 0), 1U);
  EXPECT_EQ(recorder.CreateBrush(platform::kBrushSolid, 0), 2U);
  EXPECT_EQ(recorder.CreateFont({}), 3U);
  recorder.DeleteObject(2);
  recorder.DeleteObject(1);
  EXPECT_EQ(recorder.CreateFont({}), 1U);
  EXPECT_EQ(recorder.CreatePen(platform::kPenSolid, 1, 0), 2U);
  EXPECT_EQ(recorder.CreatePen(platform::kPenSolid, 1, 0), 4U);
  recorder.DeleteObject(77);  // not there: no record
  const OwnedMetafile metafile(recorder.Close());
  const auto types = TypesOf(*metafile);
  EXPECT_EQ(std::count(types.begin(), types.end(), std::uint32_t{platform::kEmrDeleteObject}), 2);
}

TEST(MetafileRecorder, BoundsFollowTheMapping) {
  MetafileRecorder recorder(72);
  recorder.SetMapMode(platform::MapMode::kAnisotropic);
  recorder.SetWindowOrg(1000, 1000);
  recorder.SetWindowExt(100, -100);
  recorder.SetViewportExt(50, 50);
  recorder.SaveDc();
  recorder.SetWindowOrg(0, 0);
  recorder.RestoreDc();
  recorder.Ellipse({1000, 1000, 1100, 900});
  const Box bounds = recorder.Bounds();
  EXPECT_EQ(bounds.left, 0);
  EXPECT_EQ(bounds.top, 0);
  EXPECT_EQ(bounds.right, 50);
  EXPECT_EQ(bounds.bottom, 50);
}

TEST(MetafileRecorder, RecordsAreWholeWords) {
  MetafileRecorder recorder(72);
  const std::uint8_t comment[] = {1, 2, 3, 4, 5};
  recorder.Comment(comment);
  recorder.TextOut(0, 0, u"odd");
  const OwnedMetafile metafile(recorder.Close());
  EXPECT_EQ(TypesOf(*metafile), (std::vector<std::uint32_t>{platform::kEmrHeader, platform::kEmrComment,
                                                            platform::kEmrExtTextOutW, platform::kEmrEof}));
}

}  // namespace
