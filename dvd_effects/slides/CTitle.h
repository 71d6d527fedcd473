#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "dvd_effects/canvas/compositor.h"
#include "dvd_effects/menu/menu_picture.h"
#include "effects/base/CBasedVideoEffect.h"
#include "effects/base/property_table.h"

namespace AVBased {

inline constexpr char effectTitleName[] = "title";

/// A text over the frames that come: its lines fade and move in, stand, and fade and move out again at the end of
/// `duration` frames, after which nothing is drawn. A duration of 1 or below has no end. Every processed frame is the
/// next one of the title, whatever it held; Seek sets which one the next is. What is drawn depends on that number and
/// the properties alone.
///
/// | Property      | Default       |                                                                            |
/// |---------------|---------------|----------------------------------------------------------------------------|
/// | "text"        | ""            | UTF-8, a line feed between lines                                           |
/// | "face"        | "Sans"        | font family                                                                |
/// | "fontstyle"   | "bold shadow" | words for the host's renderer                                              |
/// | "size"        | "0"           | of the font, in pixels, 1 to 1000; 0: a twelfth of the frame's height      |
/// | "color"       | "#ffffff"     | #rrggbb                                                                    |
/// | "box"         | ""            | "x;y;width;height" in pixels; none: the frame without a tenth on each side |
/// | "align"       | "center"      | of each line in the box: left, center or right                             |
/// | "valign"      | "middle"      | of all lines in the box: top, middle or bottom                             |
/// | "inDuration"  | "20"          | frames until it stands; 0: at once                                         |
/// | "outDuration" | "20"          | frames from when it starts to leave; both are shortened beyond duration    |
/// | "inMotion"    | "up"          | where it moves: none, left, right, up, down, or zoom (it grows)            |
/// | "outMotion"   | "up"          | the same                                                                   |
/// | "distance"    | "0"           | how far it moves, in pixels; 0: as far as the font is large                |
/// | "lineDelay"   | "0"           | frames by which each line comes, and goes, after the one above             |
///
/// A text larger than its box is made smaller, with its aspect kept; one that would become smaller than three quarters
/// of its size is broken into more lines (WrapText). A word, colour or box of another form is refused.
/// A line that the host cannot render is filed when it is first needed, the others are drawn.
class CTitle : public CBasedVideoImageEffect {
 public:
    /// `manager` is borrowed; without one, nothing is drawn.
    explicit CTitle(IAVManager* manager);

    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    bool Seek(unsigned position) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

    /// Where a moving line goes, and whether it grows.
    struct Motion {
        int x = 0, y = 0;
        bool grows = false;
    };

 private:
    static const Property<CTitle> properties[14];
    struct Line {
        Layer layer;  // none for an empty line
        Spot middle;
    };

    std::int32_t FontSize() const;
    // In the size and the box that it has on such frames.
    text_t TextInBox() const;
    // The lines of a text as the host renders them, and how large they are: each, and one below the other.
    struct Rendered {
        std::vector<FrameOwner> lines;
        std::vector<FrameSize> sizes;
        FrameSize block;
    };
    FrameOwner RenderLine(text_t text, const std::string& line) const;
    Rendered Render(const text_t& text) const;
    void MakeLines();
    void DrawLine(Canvas& canvas, std::size_t index, std::int64_t position);

    IAVImporter* m_importer;
    std::uint64_t m_position = 0;

    text_t m_text;  // its box is empty for the default one
    std::int32_t m_size = 0, m_inDuration = 20, m_outDuration = 20, m_distance = 0, m_lineDelay = 0;
    int m_align = 1, m_valign = 1;  // halves of the free space before the text
    Motion m_inMotion, m_outMotion;

    // The lines as drawn, and what they were made for.
    FrameKind m_kind;
    std::vector<Line> m_lines;
    Spot m_middle;  // of all of them
    bool m_ready = false;
};

}  // namespace AVBased
