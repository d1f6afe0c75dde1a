#ifndef MODULES_HELPERS_WPG_READER_DRAWING_TARGET_H_
#define MODULES_HELPERS_WPG_READER_DRAWING_TARGET_H_

#include <librevenge/librevenge.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platform/metafile/recorder.h"

namespace wpg {

// Records what the library draws. Lengths come in inches, y going down.
class DrawingTarget : public librevenge::RVNGDrawingInterface {
 public:
  DrawingTarget();

  // Whether anything was drawn on a page with a size.
  bool Any() const { return drawings_ != 0 && sized_; }
  // The bitmap without its file header, if it is all that was drawn; else empty.
  std::vector<std::uint8_t> OnlyBitmap() const { return drawings_ == 1 ? bitmap_ : std::vector<std::uint8_t>(); }
  // The recording, framed by the page; by what is drawn if all of that lies beside the page.
  platform::MetafileRecorder& Recorder();

  void startPage(const librevenge::RVNGPropertyList& list) override;
  void setStyle(const librevenge::RVNGPropertyList& list) override;
  void drawRectangle(const librevenge::RVNGPropertyList& list) override;
  void drawEllipse(const librevenge::RVNGPropertyList& list) override;
  void drawPolygon(const librevenge::RVNGPropertyList& list) override;
  void drawPolyline(const librevenge::RVNGPropertyList& list) override;
  void drawPath(const librevenge::RVNGPropertyList& list) override;
  void drawGraphicObject(const librevenge::RVNGPropertyList& list) override;
  void startTextObject(const librevenge::RVNGPropertyList& list) override;
  void openSpan(const librevenge::RVNGPropertyList& list) override;
  void insertText(const librevenge::RVNGString& text) override;
  void insertTab() override { InsertText(u"    "); }
  void insertSpace() override { InsertText(u" "); }
  void insertLineBreak() override { EndLine(); }
  void closeParagraph() override { EndLine(); }

  // What such drawings don't have, or what changes nothing that is seen.
  void startDocument(const librevenge::RVNGPropertyList&) override {}
  void endDocument() override {}
  void setDocumentMetaData(const librevenge::RVNGPropertyList&) override {}
  void defineEmbeddedFont(const librevenge::RVNGPropertyList&) override {}
  void endPage() override {}
  void startMasterPage(const librevenge::RVNGPropertyList&) override {}
  void endMasterPage() override {}
  void startLayer(const librevenge::RVNGPropertyList&) override {}
  void endLayer() override {}
  void startEmbeddedGraphics(const librevenge::RVNGPropertyList&) override {}
  void endEmbeddedGraphics() override {}
  void openGroup(const librevenge::RVNGPropertyList&) override {}
  void closeGroup() override {}
  void drawConnector(const librevenge::RVNGPropertyList&) override {}
  void endTextObject() override {}
  void startTableObject(const librevenge::RVNGPropertyList&) override {}
  void openTableRow(const librevenge::RVNGPropertyList&) override {}
  void closeTableRow() override {}
  void openTableCell(const librevenge::RVNGPropertyList&) override {}
  void closeTableCell() override {}
  void insertCoveredTableCell(const librevenge::RVNGPropertyList&) override {}
  void endTableObject() override {}
  void insertField(const librevenge::RVNGPropertyList&) override {}
  void openOrderedListLevel(const librevenge::RVNGPropertyList&) override {}
  void openUnorderedListLevel(const librevenge::RVNGPropertyList&) override {}
  void closeOrderedListLevel() override {}
  void closeUnorderedListLevel() override {}
  void openListElement(const librevenge::RVNGPropertyList&) override {}
  void closeListElement() override {}
  void defineParagraphStyle(const librevenge::RVNGPropertyList&) override {}
  void openParagraph(const librevenge::RVNGPropertyList&) override {}
  void defineCharacterStyle(const librevenge::RVNGPropertyList&) override {}
  void closeSpan() override {}
  void openLink(const librevenge::RVNGPropertyList&) override {}
  void closeLink() override {}

 private:
  struct Stop {
    double offset = 0;  // 0 to 1
    std::uint32_t color = 0;
  };
  struct Style {
    enum class Fill { kNone, kSolid, kGradient };

    Fill fill = Fill::kSolid;
    std::uint32_t fillColor = 0xFFFFFF;  // red in the lowest byte
    std::vector<Stop> stops;             // of a gradient
    double angle = 0;                    // degrees
    bool winding = false;
    bool strokes = true;
    std::uint32_t strokeColor = 0;
    double strokeWidth = 0;
    std::vector<std::uint32_t> dashes;
  };

  bool Begin();
  // Fills and strokes what `add` adds to the open path.
  template <typename Add>
  void Draw(bool fills, const platform::Box& box, Add add);
  void ReadGradient(const librevenge::RVNGPropertyList& list);
  void ReadDashes(const librevenge::RVNGPropertyList& list);
  std::uint32_t ColorAt(double place) const;  // of the gradient
  void FillGradient(const platform::Box& box);
  void DrawPoints(const librevenge::RVNGPropertyList& list, bool closed);
  void InsertText(const std::u16string& text);
  void EndLine();

  platform::MetafileRecorder recorder_;
  bool sized_ = false;
  platform::Box page_;
  std::uint32_t drawings_ = 0;
  std::vector<std::uint8_t> bitmap_;
  Style style_;
  double textX_ = 0;
  double textY_ = 0;
  double fontSize_ = 12;  // points
  std::uint32_t textColor_ = 0;
  bool bold_ = false;
  bool italic_ = false;
  std::u16string face_ = u"Times New Roman";
  std::u16string line_;
};

}  // namespace wpg

#endif  // MODULES_HELPERS_WPG_READER_DRAWING_TARGET_H_
