#pragma once

#include <functional>

#include "dvd_effects/canvas/layer.h"
#include "effects/base/instruction_sets.h"

/// What templates do to their pictures before they draw them, and shapes to draw beside them. Coordinates count pixels
/// of the layer; shapes have smooth edges. Whole numbers throughout, but for the shapes' distances.
namespace AVBased {

/// A layer of one colour.
Layer PlainLayer(LayerKind kind, FrameSize size, Colour colour);
/// Mixes two colours from the top to the bottom of a layer.
void FillGradient(const Layer& layer, LayerKind kind, Colour top, Colour bottom);

/// Paints a colour over a layer as far as shown(x, y), from 0 to 1, says: the mean of 16 places in every pixel. Both
/// coordinates go from -1 to 1 between the layer's sides.
void PaintOver(const Layer& layer, LayerKind kind, Colour colour, const std::function<double(double, double)>& shown);
/// A round light that fades towards its rim.
Layer Glow(LayerKind kind, unsigned diameter, Colour colour);

/// Keeps of a layer a rectangle with corners of this radius; half of the shorter side or more makes a pill or a circle.
void RoundCorners(const Layer& layer, double radius);
/// Keeps the ellipse that touches the sides; coverage falls off over the outer `softness` (0 to 1) of the way from its
/// middle.
void CutEllipse(const Layer& layer, double softness);

/// Lays a layer over another, within which it must lie, with its top-left corner at (x, y).
void LayOver(const Layer& layer, const Layer& above, unsigned x, unsigned y);
/// The layer in the middle of a plain one that is larger by `width` on every side.
Layer Framed(const Layer& layer, LayerKind kind, unsigned width, Colour colour);
/// The layer's shape in one colour, blurred: larger by `radius` on every side. Of a radius of 0 it is sharp.
Layer ShadowOf(const Layer& layer, LayerKind kind, unsigned radius, Colour colour);

/// The layer at half its size, rounded up: the mean of every four pixels.
Layer Halved(const Layer& layer);
/// The layer, halved as often as it takes for its shorter side to have at most so many pixels.
Layer Coarse(const Layer& layer, unsigned most);
/// Fills a layer with soft patches of colours: the middle of a coarse one, enlarged to cover it.
void SpreadOver(const Layer& layer, const Layer& coarse, InstructionSet set);
/// The layer over its shadow, which falls by `drop`: in the middle of one larger by radius + drop on every side.
Layer Shaded(const Layer& layer, LayerKind kind, unsigned radius, unsigned drop, Colour colour);

/// Turns colours into shades of one: black stays, white becomes `white`. `part` of 256 is how far.
void Tone(const Layer& layer, LayerKind kind, Colour white, unsigned part);
/// Mixes a colour into every pixel, `part` of 256 of it; coverage stays.
void MixIn(const Layer& layer, LayerKind kind, Colour colour, unsigned part);

}  // namespace AVBased
