#include "host/pages/gallery_pictures.h"

#include <algorithm>
#include <optional>
#include <sstream>

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

// In the middle of the picture; none fits a very small one.
std::optional<std::string> MosaicOfWholeBlocks(int width, int height) {
    constexpr int step = 5, block = 1 << step;
    const auto whole = [](int length) { return length / block * block; };
    const int x = whole(width / 4), y = whole(height / 4);
    const int right = std::max(x + block, whole(3 * width / 4)), bottom = std::max(y + block, whole(3 * height / 4));
    if (right > width || bottom > height) return std::nullopt;
    std::ostringstream request;
    request << "mosaic:x1=" << x << ":y1=" << y << ":x2=" << right << ":y2=" << bottom << ":step=" << step;
    return request.str();
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

EffectShow ShowOf(const EffectInfo& info, int width, int height) {
    const std::string name = info.name;
    EffectShow show{{}, {}, info.traits & changesAlpha ? ".webp" : ".jpg"};
    if (info.traits & variesWithTime) {
        for (const char* const moment : {":FadeMin=40", ":FadeMin=128", ":FadeMin=216"})
            show.stills.push_back({name + moment});
        if (info.traits & fadesOut)
            show.stills = {{name + ":FadeMax=216"}, {name + ":FadeMax=128"}, {name + ":FadeMax=40"}};
        show.film = {name};
        return show;
    }
    std::string request = ShownRequest(info);
    if (name == "mosaic") request = MosaicOfWholeBlocks(width, height).value_or(request);
    if (name == "simple_laplacian_sharpen") request += ":inside=rectangle,50%,0,50%,100%";
    show.stills = {std::vector<std::string>(std::size_t(info.times), request)};
    if (info.traits & newEachFrame) show.film = show.stills.front();
    return show;
}

void MakePicture(const std::string& from, const std::vector<std::string>& requests, const std::string& to,
                 const EffectModule& module) {
    ApplyOptions apply;
    apply.inputs = {from};
    apply.effects = requests;
    apply.run.output.path = to;
    Apply(apply, module);
}

void WriteStandstill(const std::string& from, PictureShape shape, int longestSide, const std::string& to,
                     const EffectModule& module) {
    constexpr int frames = 25;
    ApplyOptions options;
    if (std::max(shape.width, shape.height) > longestSide)
        options.preparation.scale =
            std::string(shape.width < shape.height ? "x" : "").append(std::to_string(longestSide));
    options.run.output.path = to;
    RunEffects(from, options, module, true, [](const PreparedSource&) { return EffectRun{{}, frames}; });
}

std::string ApplyCommand(const std::string& from, const std::string& to, const std::vector<std::string>& requests) {
    std::string command = "nifikral apply " + ShellWord(from) + " " + to;
    for (const std::string& request : requests) command.append(" ").append(request);
    return command;
}

}  // namespace Nifikral
