#include "host/studio/still_preview.h"

#include <algorithm>
#include <cmath>

#include "host/disc/stages.h"
#include "host/media/frame_adapter.h"
#include "host/media/picture_formats.h"
#include "host/run/apply.h"
#include "host/run/request_chain.h"

namespace Nifikral {
namespace {

Scale ScaleOf(const PictureShape& shape, AVRational rate) { return {shape.width, shape.height, av_q2d(rate)}; }

std::string Joined(std::initializer_list<long long> numbers) {
    std::string text;
    for (const long long number : numbers) text += std::to_string(number) + "/";
    return text;
}

std::unique_ptr<std::vector<PlacedEffect>> Placed(const EffectRequest& request, const EffectModule& module,
                                                  const StillWish& wish, const SourceFacts& facts,
                                                  const PictureShape& shape) {
    const long long frames = facts.frames;
    const Extent extent{ScaleOf(shape, facts.rate), shape.format, wish.run,
                        std::min(frames - 1, wish.run.last) - wish.run.first + 1, [frames](const FrameRange& range) {
                            return std::max(0LL, std::min(frames - 1, range.last) - range.first + 1);
                        }};
    const EffectRequest resized = request.Resized(ScaleOf(facts.shape, facts.rate), extent.scale);
    return std::make_unique<std::vector<PlacedEffect>>(PlaceEffects({resized}, module, extent));
}

}  // namespace

PictureShape ShownShape(const PictureShape& whole, int width) {
    PictureShape shape = whole;
    shape.width = std::min(width, whole.width);
    shape.height = std::max(1, int(std::lround(double(whole.height) * shape.width / whole.width)));
    return shape;
}

SharedFrame StillView::Make(const StillWish& wish, PreviewSources& sources, const EffectModule& module,
                            const ViewTurn& turn) {
    const SourceFacts facts = sources.Facts(wish.path);
    std::vector<EffectRequest> requests;
    std::vector<std::string> texts;  // what each is asked for by: a preset stands for several
    for (const std::string& text : wish.effects)
        for (EffectRequest& request : ParseEffectRequests({text}, module, {})) {
            texts.push_back(text + "@" + request.text);
            requests.push_back(std::move(request));
        }
    RefuseGenerators(requests);
    m_showsAlpha = HasAlpha(facts.shape.format) || AnyChangesAlpha(requests);
    const unsigned code = FormatForEffects(facts.shape, requests);
    PictureShape shape = wish.crop ? facts.shape : ShownShape(facts.shape, wish.width);
    shape.format = FfmpegFormat(code);
    shape.matrix = AVCOL_SPC_UNSPECIFIED;
    turn.RequireNewest();
    const WantedPicture wanted{wish.path, wish.number, shape};
    SharedFrame picture = sources.Picture(wanted);

    const std::string place = KeyOfFile(wish.path) + Joined({code, shape.width, shape.height, wish.run.first,
                                                             wish.run.last, facts.shape.width, facts.frames});
    std::string pictureKey = Joined({wish.number});
    // Of large pictures not every step is kept.
    constexpr std::size_t mostBytes = 64 << 20;
    const std::size_t kept = std::max<std::size_t>(1, mostBytes / std::max<std::size_t>(1, BytesOf(*picture)));
    m_stages.resize(requests.size());
    for (std::size_t i = 0; i < requests.size(); ++i) {
        Stage& stage = m_stages[i];
        const std::string key = place + texts[i];
        if (stage.key != key || !stage.chain) {
            stage = {};
            stage.placed = Placed(requests[i], module, wish, facts, shape);
            stage.chain = std::make_unique<EffectChain>(module, *stage.placed);
            stage.key = key;
        }
        pictureKey += "|" + key;
        if (stage.pictureKey == pictureKey) {
            picture = stage.picture;
            continue;
        }
        turn.RequireNewest();
        FramePtr made = Referenced(*picture);
        PrepareForEffects(made);
        try {
            stage.chain->Process(*made, code, wish.number);
        } catch (...) {
            stage = {};
            throw;
        }
        picture = Shared(std::move(made));
        const bool keeps = i + kept >= requests.size();
        stage.pictureKey = keeps ? pictureKey : "";
        stage.picture = keeps ? picture : nullptr;
    }
    return picture;
}

}  // namespace Nifikral
