#include "dvd_effects/menu/menu_sources.h"

#include <algorithm>
#include <utility>

#include "dvd_effects/menu/host_sources.h"
#include "dvd_effects/menu/list_parsers.h"
#include "dvd_effects/menu/menu_errors.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

// Lines that the host reads beside an error of a source.
enum Line : int { lineProperty = 40, lineSource = 140 };

constexpr std::int32_t mostSources = 4096;

// Whether less than three fifths of a picture would be seen that covers a box.
bool LosesMuch(FrameSize picture, FrameSize box) {
    const std::uint64_t asWide = std::uint64_t(picture.width) * box.height;
    const std::uint64_t asHigh = std::uint64_t(picture.height) * box.width;
    return std::min(asWide, asHigh) * 5 < std::max(asWide, asHigh) * 3;
}
// What a picture fills that is shown whole: it keeps away from the edges.
FrameSize PartOfStage(FrameSize box) { return {std::max(1u, box.width * 7 / 8), std::max(1u, box.height * 7 / 8)}; }

}  // namespace

void MenuSources::SetCount(std::int32_t count) {
    Require(count >= 0 && count <= mostSources, textInvalidParamValue, lineProperty, basedMenuName);
    m_records = std::make_unique<additionsource_t[]>(unsigned(count));
    m_count = unsigned(count);
    m_pictures.clear();
    Forget();
}

void MenuSources::SetList(ParseList parse, const std::string& list) {
    if (!parse(m_records.get(), list, m_count)) RaiseHostFailure(textInvalidParamValue, lineProperty, basedMenuName);
}

void MenuSources::SetPaths(const std::string& list) {
    m_paths = list;
    Forget();
}

void MenuSources::SetMaskPaths(const std::string& list) {
    m_maskPaths = list;
    Forget();
}

void MenuSources::AddSizes(const std::string& list) {
    for (const std::string& item : SplitList(list, ';')) m_sizes.push_back(ParseInteger(item));
    Forget();
}

FrameSize MenuSources::SizeOf(unsigned index, FrameSize own) const {
    if (!HasSizeOf(index)) return own;
    const auto side = [&](std::size_t at) {
        Require(m_sizes[at] > 0 && unsigned(m_sizes[at]) <= largestSide, textInvalidParamValue, lineSource,
                basedMenuName);
        return unsigned(m_sizes[at]);
    };
    return {side(std::size_t(index) * 2), side(std::size_t(index) * 2 + 1)};
}

void MenuSources::Prepare(IAVManager* manager, const FrameKind& kind, const PictureRules& rules) {
    if (m_isReady) return;
    m_isReady = true;
    m_pictures.clear();
    for (unsigned i = 0; i < m_count; ++i) {
        m_records[i].source.reset();
        m_records[i].maskSource.reset();
    }
    const std::vector<std::string> paths = SplitList(m_paths, ';'), masks = SplitList(m_maskPaths, ';');
    if (paths.size() != m_count) return;
    m_pictures.reserve(m_count);
    for (unsigned i = 0; i < m_count; ++i) {
        m_pictures.emplace_back(kind);
        Attempt(lineSource, [&] {
            additionsource_t& record = m_records[i];
            SourceOwner opened = OpenSource(manager, paths[i], record.isImage);
            // A source without its mask is not shown, so it is not kept open either.
            if (i < masks.size() && !masks[i].empty())
                record.maskSource = OpenSource(manager, masks[i], record.isImage);
            record.source = std::move(opened);
            if (record.isImage) AdvanceOne(i, rules);
        });
    }
    Pass(std::exchange(m_toPass, 0));
}

bool MenuSources::HasVideos() const {
    return std::any_of(m_records.get(), m_records.get() + m_count,
                       [](const additionsource_t& record) { return record.source != nullptr; });
}

void MenuSources::Pass(std::int64_t frames) {
    if (!m_isReady) m_toPass += frames;
    for (unsigned i = 0; i < m_count && m_isReady; ++i) {
        const additionsource_t& record = m_records[i];
        if (!record.source) continue;
        for (IAVSource* const source : {record.source.get(), record.maskSource.get()})
            Attempt(lineSource, [&] {
                for (std::int64_t left = source && !source->IsStill() ? frames : 0; left > 0; --left)
                    ReadFrame(*source);
            });
    }
}

void MenuSources::Advance(const PictureRules& rules) {
    for (unsigned i = 0; i < m_pictures.size(); ++i)
        if (m_records[i].source) Attempt(lineSource, [&] { AdvanceOne(i, rules); });
}

void MenuSources::AdvanceOne(unsigned index, const PictureRules& rules) {
    additionsource_t& record = m_records[index];
    MenuPicture& picture = m_pictures[index];
    const bool stillMask = record.isImage || !record.maskSource || record.maskSource->IsStill();
    // What needs to be read only once is released then, and also when it cannot be read.
    SourceOwner lastUse, lastUseOfMask;
    IAVSource& source = *record.source;
    IAVSource* const maskSource = record.maskSource.get();
    if (stillMask && (record.isImage || source.IsStill())) {
        lastUse = std::move(record.source);
        lastUseOfMask = std::move(record.maskSource);
    }
    record.frame = ReadFrame(source);
    const FrameSize own = AVBased::SizeOf(*record.frame), box = rules.BoxOf(index, own);
    const PictureFit fit = rules.Fit();
    const bool isStaged = fit == PictureFit::Stage && !maskSource && LosesMuch(own, box);
    Require(!isStaged || std::max(box.width, box.height) <= largestSide, textInvalidParamValue, lineSource,
            basedMenuName);
    const bool covers = fit != PictureFit::Contain && !isStaged;
    const FrameSize size = covers ? FitOver(own, box) : FitInto(own, isStaged ? PartOfStage(box) : box);
    if (maskSource && !(picture.mask && stillMask && picture.mask.Size() == size)) {
        record.maskFrame = ReadFrame(*maskSource);
        picture.MakeMask(*record.maskFrame, size);
        record.maskFrame.reset();
    }
    picture.Make(*record.frame, size);
    record.frame.reset();
    if (covers) picture.CropTo(box);
    if (isStaged) picture.SetOnStage(box);
    picture.own = picture.layer.Size();
    rules.FinishPicture(picture.layer, index);
    picture.isOpaque = IsOpaque(picture.layer);
    picture.smaller.clear();
    picture.inBox = {(std::int32_t(box.width) - std::int32_t(picture.layer.Width())) / 2,
                     (std::int32_t(box.height) - std::int32_t(picture.layer.Height())) / 2};
}

std::vector<ShownSource> MenuSources::Shown() const {
    std::vector<ShownSource> shown;
    for (unsigned i = 0; i < m_pictures.size(); ++i) {
        const MenuPicture& picture = m_pictures[i];
        if (picture.layer)
            shown.push_back(
                {m_records[i], picture.layer, picture.isOpaque, picture.inBox, picture.smaller, i, picture.own});
    }
    return shown;
}

}  // namespace AVBased
