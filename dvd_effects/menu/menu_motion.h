#pragma once

#include <cstdint>

#include "dvd_effects/menu/menu_records.h"

/// The arithmetic of moving, fading and warping.
namespace AVBased {

/// Where a source stands at frame `n` of the menu: along its formula at moveSpeed pixels a frame from its start,
/// stopped at its end. The first frame has n = 1.
point_t MovedPosition(point_t start, point_t end, const formula_t& formula, std::int32_t moveSpeed, std::int32_t n);

/// Where a source, or a text, stands then.
point_t PositionOf(const additionsource_t& source, std::uint32_t n);
point_t PositionOf(const text_t& text, std::uint32_t n);
/// Where a source's fade stands then: startTrans on the first frame, |fadeSpeed| nearer to endTrans on each later one.
std::uint8_t OpacityOf(const additionsource_t& source, std::uint32_t n);
/// Whether a text is shown then.
bool IsShown(const text_t& text, std::uint32_t n);

/// One step of a ramp, kept within a byte: mode 1 adds, mode 0 subtracts, any other mode gives 0.
unsigned char CalculateNewValue(unsigned char value, unsigned char delta, int mode);

/// The line through (x0, y0) and (x1, y1) at x, truncated toward zero; x1 must differ from x0.
void CalculateYCondinate(int x0, int y0, int x1, int y1, int x, int& y);

/// 10 when a point lies inside the panel that four edges bound, or on one of them; -1 outside.
int InRange(double x, double y, const formula_t* edges);

/// Fills the warp map that places a picture of W x H pixels into a panel of a destination of W x H pixels. Each plane
/// has W x H entries, row by row: coverage, border side (1, 2 or 3), source column and source row. The columns and rows
/// of pixels outside the panel are the caller's, but for the first quarter of each plane, which is cleared. `corners`
/// are the ends of the top and of the bottom edge, `limits` bound the four soft borders, `edges` points to four lines.
/// Returns 1, or 0 after filing an error (10021008 "Null Pointer").
int CondinateChange(unsigned char* coverage, unsigned char* side, int* sourceColumns, int* sourceRows,
                    const position_t& corners, const position_t& limits, const formula_t* edges, unsigned width,
                    unsigned height);

}  // namespace AVBased
