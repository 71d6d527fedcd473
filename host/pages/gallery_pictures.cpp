#include "host/pages/gallery_pictures.h"

#include <algorithm>

#include "host/base/shell_word.h"
#include "host/run/apply.h"

namespace Nifikral {
namespace {

PictureShape Reduced(PictureShape shape, int longestSide) {
    const int longer = std::max(shape.width, shape.height);
    if (longer <= longestSide) return shape;
    const auto reduced = [&](int side) { return int(std::max(1LL, (2LL * side * longestSide / longer + 1) / 2)); };
    shape.width = reduced(shape.width);
    shape.height = reduced(shape.height);
    return shape;
}

}  // namespace

PictureShape WriteReduced(const std::string& from, const std::string& to, int longestSide) {
    MediaSource source(from, {.range = {0, 0}, .audio = false});
    OutputTraits traits = TraitsOf(source, AV_PIX_FMT_RGB24);
    traits.source = Reduced(traits.source, longestSide);
    traits.metadata = nullptr;
    OutputOptions output;
    output.path = to;
    const std::unique_ptr<MediaSink> sink = OpenSink(output, traits, false);
    std::optional<SourceStep> step = source.Next();
    FramePtr& frame = step->frame;
    if (HasAlpha(ShapeOf(*frame).format)) {
        PictureShape packed = ShapeOf(*frame);
        packed.format = AV_PIX_FMT_BGRA;
        PictureConverter(packed).Convert(frame);
        LayOverBlack(*frame);
    }
    PictureConverter(sink->Shape()).Convert(frame);
    sink->Write(std::move(frame), 0);
    sink->Finish();
    return sink->Shape();
}

std::vector<std::string> ShowEffect(const EffectInfo& info, const std::string& photograph, const std::string& to,
                                    const EffectModule& module) {
    ApplyOptions apply;
    apply.inputs = {photograph};
    apply.effects.assign(std::size_t(info.times), ShownRequest(info));
    apply.run.output.path = to;
    Apply(apply, module);
    return apply.effects;
}

std::string ApplyCommand(const std::string& from, const std::string& to, const std::vector<std::string>& requests) {
    std::string command = "nifikral apply " + ShellWord(from) + " " + to;
    for (const std::string& request : requests) command.append(" ").append(request);
    return command;
}

}  // namespace Nifikral
