#include "dvd_effects/menu/CBasedMenu.h"

#include <algorithm>
#include <cstdlib>

#include "dvd_effects/canvas/errors.h"
#include "dvd_effects/menu/host_sources.h"
#include "dvd_effects/menu/list_parsers.h"
#include "dvd_effects/menu/menu_motion.h"
#include "dvd_effects/menu/wrapped_text.h"
#include "effects/base/fixed_point.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

constexpr char unitName[] = "CBasedMenu";

// Lines that the host reads beside an error of a menu.
enum Line : int { lineProperty = 40, lineBackground = 100, lineSource = 140, lineScene = 180, lineText = 200 };

constexpr std::int32_t mostSources = 4096;

// A step of a menu's frame: what fails is filed, and the frame goes on without it.
template <class Work>
void Attempt(int line, Work&& work) {
    AtBoundary(line, unitName, std::forward<Work>(work));
}

bool HasAlpha(IRawVideoFrame& frame) {
    const FormatInfo* const info = FindFormat(frame.GetPixelFormat());
    return info && info->components == 4;
}

// Refuses a property whose parser has filed why.
void RequireParsed(int result) {
    if (!result) RaiseHostFailure(textInvalidParamValue, lineProperty, unitName);
}

}  // namespace

template <int (*parse)(additionsource_t*, const std::string&, unsigned)>
void CBasedMenu::SetList(CBasedMenu& menu, const std::string& list) {
    RequireParsed(parse(menu.m_sources.get(), list, menu.m_sourceCount));
}
template <int (*parse)(additionsource_t*, const std::string&, unsigned)>
void CBasedMenu::SetFades(CBasedMenu& menu, const std::string& list) {
    SetList<parse>(menu, list);
    menu.m_hasFades = true;
}

const Property<CBasedMenu> CBasedMenu::properties[18] = {
    {"width", "0",
     [](CBasedMenu& menu, std::int32_t width) {
         menu.m_width = width;
         menu.ForgetBackground();
     }},
    {"height", "0",
     [](CBasedMenu& menu, std::int32_t height) {
         menu.m_height = height;
         menu.ForgetBackground();
     }},
    {"sourcePath", "", [](CBasedMenu& menu, const std::string& path) { menu.OpenBackground(path); }},
    {"backgroundMask", "", [](CBasedMenu& menu, const std::string& path) { menu.OpenBackgroundMask(path); }},
    {"textNumber", "0",
     [](CBasedMenu& menu, std::int32_t number) {
         menu.m_textNumber = number;
         menu.m_textsReady = false;
     }},
    {"textInfos", "",
     [](CBasedMenu& menu, const std::string& infos) {
         menu.m_textInfos = infos;
         menu.m_textsReady = false;
     }},
    {"additionSourceNumber", "0", [](CBasedMenu& menu, std::int32_t number) { menu.SetSourceCount(number); }},
    {"isAdditionSourceImages", "",
     [](CBasedMenu& menu, const std::string& list) {
         SetList<GetAdditionSourceType>(menu, list);
         menu.m_sourcesReady = false;
     }},
    {"additionSourcePaths", "",
     [](CBasedMenu& menu, const std::string& list) {
         menu.m_sourcePaths = list;
         menu.m_sourcesReady = false;
     }},
    {"additionSourceSizes", "",
     [](CBasedMenu& menu, const std::string& list) {
         // Deliberate: a second list goes behind the first one, and the number of items is not checked.
         for (const std::string& item : SplitList(list, ';')) menu.m_sourceSizes.push_back(ParseInteger(item));
         menu.m_sourcesReady = false;
     }},
    {"maskPaths", "",
     [](CBasedMenu& menu, const std::string& list) {
         menu.m_maskPaths = list;
         menu.m_sourcesReady = false;
     }},
    {"startPositions", "",
     [](CBasedMenu& menu, const std::string& list) {
         SetList<GetStartPositions>(menu, list);
         menu.m_hasPlaces = true;
     }},
    {"endPositions", "", SetList<GetEndPositions>},
    {"moveFormulas", "", SetList<GetMoveFormulas>},
    {"moveSpeeds", "", SetList<GetMoveSpeeds>},
    {"startTrans", "", SetFades<GetStartTrans>},
    {"endTrans", "", SetFades<GetEndTrans>},
    {"fadeSpeeds", "", SetFades<GetFadeSpeeds>},
};

CBasedMenu::Picture::Picture(LayerKind kind) : maker(kind), maskMaker({true, kind.rows}) {}

CBasedMenu::CBasedMenu(const char* name, IAVManager* manager)
    : CBasedVideoImageEffect(name),
      m_manager(manager),
      m_textImporter(manager ? manager->GetImporter(importerSimpleHtmlText) : nullptr) {
    DeclareProperties(*this, properties);
}

void CBasedMenu::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    StoreProperty(*this, properties, name, node);
}

void CBasedMenu::OpenBackground(const std::string& path) {
    m_backgroundSource = path.empty() ? nullptr : AVBased::OpenSource(m_manager, path, false, textNullBackgroundSource);
    ForgetBackground();
}

void CBasedMenu::OpenBackgroundMask(const std::string& path) {
    m_backgroundMask = path.empty() ? nullptr : ReadFrame(*AVBased::OpenSource(m_manager, path, true));
    ForgetBackground();
}

void CBasedMenu::SetSourceCount(std::int32_t count) {
    Require(count >= 0 && count <= mostSources, textInvalidParamValue, lineProperty, unitName);
    m_sources = std::make_unique<additionsource_t[]>(unsigned(count));
    m_sourceCount = unsigned(count);
    m_pictures.clear();
    m_sourcesReady = false;
}

void CBasedMenu::ForgetBackground() {
    m_background.reset();
    m_backgroundPicture.reset();
    m_backgroundConverter.reset();
    m_backgroundReady = m_hasScenery = false;
}

void CBasedMenu::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ++m_frameNumber;
    if (!Canvas::Takes(*frame)) return;
    Prepare({frame->GetPixelFormat(), SizeOf(*frame)});
    for (unsigned i = 0; i < m_pictures.size(); ++i)
        if (m_sources[i].source) Attempt(lineSource, [&] { AdvanceSource(i); });
    Canvas canvas(*frame, Instructions());
    if (!m_hasScenery)
        Attempt(lineScene, [&] {
            m_hasScenery = true;
            RequireMenuSize();
            MakeScenery();
        });
    DrawBackground(canvas);
    Attempt(lineScene, [&] { DrawScene(canvas); });
}

void CBasedMenu::Prepare(const FrameKind& kind) {
    if (kind != m_kind) {
        m_kind = kind;
        ForgetBackground();
        m_sourcesReady = m_textsReady = false;
    }
    if (!m_sourcesReady) OpenSources();
    if (!m_textsReady) OpenTexts();
}

FrameSize CBasedMenu::MenuSize() const {
    const auto side = [](std::int32_t set, unsigned own) { return set > 0 ? unsigned(set) : own; };
    return {side(m_width, m_kind.size.width), side(m_height, m_kind.size.height)};
}

void CBasedMenu::DrawBackground(Canvas& canvas) {
    if (!m_backgroundReady)
        Attempt(lineBackground, [&] { m_backgroundSource ? AdvanceBackground() : PaintOwnBackground(); });
    const FrameSize menu = MenuSize();
    if (!m_background || menu.width < m_kind.size.width || menu.height < m_kind.size.height) canvas.Clear();
    if (m_background) canvas.Copy(*m_background);
}

void CBasedMenu::RequireMenuSize() const {
    const FrameSize menu = MenuSize();
    Require(menu.width <= largestSide && menu.height <= largestSide, textInvalidParamValue, lineBackground, unitName);
}

std::unique_ptr<CRawVideoFrame> CBasedMenu::EmptyBackground() const {
    RequireMenuSize();
    const FrameSize menu = MenuSize();
    auto background = std::make_unique<CRawVideoFrame>(false, m_kind.format, menu.width, menu.height, true);
    Canvas(*background, Instructions()).Clear();
    return background;
}

void CBasedMenu::PaintOwnBackground() {
    m_backgroundReady = true;
    if (!HasOwnBackground()) return;
    auto background = EmptyBackground();
    Canvas canvas(*background, Instructions());
    PaintBackground(canvas);
    m_background = std::move(background);
}

void CBasedMenu::AdvanceBackground() {
    const FrameSize menu = MenuSize();
    m_backgroundReady = true;
    if (!m_background) m_background = EmptyBackground();
    m_backgroundReady = m_backgroundSource->IsStill();
    const FrameOwner frame = ReadFrame(*m_backgroundSource);
    if (m_backgroundMask || HasAlpha(*frame))
        LayBackground(*frame, menu);
    else
        PlaceBackground(*frame, menu);
}

void CBasedMenu::PlaceBackground(IRawVideoFrame& frame, FrameSize menu) {
    IImageConverter* converter = m_backgroundConverter.release();
    int width = 0, height = 0;
    const int done = AddBlack(&frame, menu.width, menu.height, converter, width, height, m_background.get(), 1);
    // A video whose frames change their size needs another converter.
    m_backgroundConverter.reset(converter);
    if (done) return;
    m_backgroundConverter.reset();
    RaiseHostFailure(textUnexpectedError, lineBackground, unitName);
}

void CBasedMenu::LayBackground(IRawVideoFrame& frame, FrameSize menu) {
    if (!m_backgroundPicture) m_backgroundPicture = std::make_unique<Picture>(Kind());
    Picture& picture = *m_backgroundPicture;
    const FrameSize size = FitInto(SizeOf(frame), menu);
    const auto x = std::int32_t(menu.width - size.width) / 2, y = std::int32_t(menu.height - size.height) / 2;
    if (m_backgroundMask && !picture.mask) picture.MakeMask(*m_backgroundMask, menu, Instructions());
    picture.Make(frame, size, Instructions(), {x, y});
    Canvas canvas(*m_background, Instructions());
    canvas.Clear();
    canvas.Lay(picture.layer, x, y);
}

void CBasedMenu::Picture::MakeMask(IRawVideoFrame& frame, FrameSize size, InstructionSet set) {
    maskMaker.Make(frame, size, mask, set);
    BrightnessToCoverage(mask);
}

void CBasedMenu::Picture::Make(IRawVideoFrame& frame, FrameSize size, InstructionSet set, point_t inMask) {
    maker.Make(frame, size, layer, set);
    if (mask) MultiplyCoverage(layer, mask, inMask.x, inMask.y);
}

void CBasedMenu::Picture::CropTo(FrameSize box) {
    if (FrameSize{layer.Width(), layer.Height()} != box)
        layer = Cropped(layer, (layer.Width() - box.width) / 2, (layer.Height() - box.height) / 2, box);
}

void CBasedMenu::OpenSources() {
    m_sourcesReady = true;
    m_pictures.clear();
    for (unsigned i = 0; i < m_sourceCount; ++i) {
        m_sources[i].source.reset();
        m_sources[i].maskSource.reset();
    }
    const std::vector<std::string> paths = SplitList(m_sourcePaths, ';'), masks = SplitList(m_maskPaths, ';');
    if (paths.size() != m_sourceCount) return;
    m_pictures.reserve(m_sourceCount);
    for (unsigned i = 0; i < m_sourceCount; ++i) {
        m_pictures.emplace_back(Kind());
        Attempt(lineSource, [&] {
            additionsource_t& source = m_sources[i];
            SourceOwner opened = AVBased::OpenSource(m_manager, paths[i], source.isImage);
            // A source without its mask is not shown, so it is not kept open either.
            if (i < masks.size() && !masks[i].empty())
                source.maskSource = AVBased::OpenSource(m_manager, masks[i], source.isImage);
            source.source = std::move(opened);
            if (source.isImage) AdvanceSource(i);
        });
    }
}

void CBasedMenu::AdvanceSource(unsigned index) {
    additionsource_t& record = m_sources[index];
    Picture& picture = m_pictures[index];
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
    const FrameSize own = SizeOf(*record.frame), box = BoxOf(index, own);
    const bool covers = Fit() == PictureFit::Cover;
    const FrameSize size = covers ? FitOver(own, box) : FitInto(own, box);
    if (maskSource && !(picture.mask && stillMask && FrameSize{picture.mask.Width(), picture.mask.Height()} == size)) {
        record.maskFrame = ReadFrame(*maskSource);
        picture.MakeMask(*record.maskFrame, size, Instructions());
        record.maskFrame.reset();
    }
    picture.Make(*record.frame, size, Instructions());
    record.frame.reset();
    if (covers) picture.CropTo(box);
    FinishPicture(picture.layer, index);
    picture.isOpaque = IsOpaque(picture.layer);
    picture.smaller.clear();
    picture.inBox = {(std::int32_t(box.width) - std::int32_t(picture.layer.Width())) / 2,
                     (std::int32_t(box.height) - std::int32_t(picture.layer.Height())) / 2};
}

FrameSize CBasedMenu::BoxOf(unsigned index, FrameSize own) const {
    if (!HasSizeOf(index)) return own;
    const std::size_t at = std::size_t(index) * 2;
    const auto side = [](std::int32_t set) {
        Require(set > 0 && unsigned(set) <= largestSide, textInvalidParamValue, lineSource, unitName);
        return unsigned(set);
    };
    return {side(m_sourceSizes[at]), side(m_sourceSizes[at + 1])};
}

std::vector<CBasedMenu::ShownSource> CBasedMenu::ShownSources() const {
    std::vector<ShownSource> shown;
    for (unsigned i = 0; i < m_pictures.size(); ++i)
        if (m_pictures[i].layer)
            shown.push_back({m_sources[i], m_pictures[i].layer, m_pictures[i].isOpaque, m_pictures[i].inBox,
                             m_pictures[i].smaller});
    return shown;
}

std::uint8_t CBasedMenu::OpacityOf(const additionsource_t& source) const {
    const auto byte = [](std::int32_t value) { return std::int64_t(ClampToByte(value)); };
    const std::int64_t start = byte(source.startTrans), end = byte(source.endTrans);
    const std::int64_t step = std::min<std::int64_t>(std::abs(std::int64_t(source.fadeSpeed)), 255);
    const std::int64_t way = step * (std::int64_t(m_frameNumber) - 1);
    return std::uint8_t(start < end ? std::min(start + way, end) : std::max(start - way, end));
}

point_t CBasedMenu::PositionOf(const additionsource_t& source) const {
    return MovedPosition(source.startPosition, source.endPosition, source.moveFormula, source.moveSpeed, FrameNumber());
}

void CBasedMenu::OpenTexts() {
    m_textsReady = true;
    m_texts.clear();
    const std::vector<std::string> infos = SplitList(m_textInfos, '\\');
    // Deliberate: without a word.
    if (std::int64_t(infos.size()) != m_textNumber) return;
    for (const std::string& info : infos) Attempt(lineText, [&] { OpenText(info); });
}

FrameOwner CBasedMenu::RenderText(const text_t& item) const {
    IAVSource* source = nullptr;
    ISimpleHTMLRender* render = nullptr;
    if (!CreateTextRender(m_textImporter, source, render, item)) return nullptr;
    return ReadFrame(*SourceOwner(source));
}

void CBasedMenu::OpenText(const std::string& info) {
    Text text;
    if (!ParseTextInfo(&text.item, info)) return;
    WrapText(m_textImporter, text.item, [&](const text_t& tried) {
        const FrameOwner frame = RenderText(tried);
        return frame ? SizeOf(*frame) : FrameSize{};
    });
    const FrameOwner frame = RenderText(text.item);
    if (!frame) return;
    Picture picture(Kind());
    picture.Make(*frame, FitText(SizeOf(*frame), text.item.boxSize), Instructions());
    text.layer = std::move(picture.layer);
    m_texts.push_back(std::move(text));
}

point_t CBasedMenu::PositionOf(const text_t& item) const {
    if (!item.moves) return item.boxPosition;
    return MovedPosition(item.boxPosition, item.endPosition, item.moveFormula, item.moveSpeed, FrameNumber());
}

bool CBasedMenu::IsShown(const text_t& item) const {
    if (item.moves || !item.hasStillTail) return true;
    const std::int32_t n = FrameNumber(), first = item.stillTail[0], last = item.stillTail[1];
    return (first <= 0 || n >= first) && (last <= 0 || n <= last);
}

void CBasedMenu::DrawTexts(Canvas& canvas) const {
    for (const Text& text : m_texts) {
        const point_t at = PositionOf(text.item);
        if (IsShown(text.item)) canvas.Lay(text.layer, at.x, at.y);
    }
}

}  // namespace AVBased
