#include "dvd_effects/slides/CTitle.h"

#include <algorithm>

#include "dvd_effects/canvas/animation.h"
#include "dvd_effects/canvas/errors.h"
#include "dvd_effects/menu/host_sources.h"
#include "dvd_effects/menu/list_parsers.h"
#include "dvd_effects/menu/menu_frames.h"
#include "dvd_effects/menu/wrapped_text.h"

namespace AVBased {

using namespace TarvoBased;

namespace {

constexpr char unitName[] = "CTitle";

// Lines that the host reads beside an error of a title.
enum Line : int { lineProperty = 40, lineText = 100 };

void RequireKnown(bool known) { Require(known, textInvalidParamValue, lineProperty, unitName); }

template <class Value, std::size_t count>
Value ParseWord(const std::pair<const char*, Value> (&table)[count], const std::string& word) {
    const auto* const row = std::ranges::find(table, word, [](const auto& entry) { return entry.first; });
    RequireKnown(row != std::end(table));
    return row->second;
}

// In halves of the free space.
constexpr std::pair<const char*, int> aligns[] = {{"left", 0}, {"center", 1}, {"right", 2}},
                                      valigns[] = {{"top", 0}, {"middle", 1}, {"bottom", 2}};
constexpr std::pair<const char*, CTitle::Motion> motions[] = {
    {"none", {}}, {"left", {-1, 0}}, {"right", {1, 0}}, {"up", {0, -1}}, {"down", {0, 1}}, {"zoom", {0, 0, true}}};

// The part of the free space before a text that is aligned so.
std::int64_t Before(int align, std::int64_t box, std::int64_t text) { return (box - text) * align / 2; }

void ParseColour(const std::string& colour, text_t& text) {
    RequireKnown(colour.size() == 7 && colour[0] == '#' &&
                 colour.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos);
    const unsigned long value = std::stoul(colour.substr(1), nullptr, 16);
    text.red = std::uint8_t(value >> 16);
    text.green = std::uint8_t(value >> 8 & 255);
    text.blue = std::uint8_t(value & 255);
}

void ParseBox(const std::string& list, text_t& text) {
    const std::vector<std::string> items = SplitList(list, ';');
    RequireKnown(items.empty() || items.size() == 4);
    const auto item = [&](std::size_t i) { return items.empty() ? 0 : ParseInteger(items[i]); };
    RequireKnown(items.empty() || (item(2) > 0 && item(3) > 0));
    text.boxPosition = {item(0), item(1)};
    text.boxSize = {item(2), item(3)};
}

// What setting a property of one plain value does.
template <std::int32_t CTitle::*number>
void SetNotBelow0(CTitle& title, std::int32_t value) {
    title.*number = std::max(value, 0);
}
template <text_t CTitle::*text, std::string text_t::*part>
void SetText(CTitle& title, const std::string& value) {
    title.*text.*part = value;
}

}  // namespace

const Property<CTitle> CTitle::properties[14] = {
    {"text", "", SetText<&CTitle::m_text, &text_t::text>},
    {"face", "Sans", SetText<&CTitle::m_text, &text_t::face>},
    {"fontstyle", "bold shadow", SetText<&CTitle::m_text, &text_t::fontstyle>},
    {"size", "0", SetNotBelow0<&CTitle::m_size>},
    {"color", "#ffffff", [](CTitle& title, const std::string& colour) { ParseColour(colour, title.m_text); }},
    {"box", "", [](CTitle& title, const std::string& list) { ParseBox(list, title.m_text); }},
    {"align", "center", [](CTitle& title, const std::string& word) { title.m_align = ParseWord(aligns, word); }},
    {"valign", "middle", [](CTitle& title, const std::string& word) { title.m_valign = ParseWord(valigns, word); }},
    {"inDuration", "20", SetNotBelow0<&CTitle::m_inDuration>},
    {"outDuration", "20", SetNotBelow0<&CTitle::m_outDuration>},
    {"inMotion", "up", [](CTitle& title, const std::string& word) { title.m_inMotion = ParseWord(motions, word); }},
    {"outMotion", "up", [](CTitle& title, const std::string& word) { title.m_outMotion = ParseWord(motions, word); }},
    {"distance", "0", SetNotBelow0<&CTitle::m_distance>},
    {"lineDelay", "0", SetNotBelow0<&CTitle::m_lineDelay>},
};

CTitle::CTitle(IAVManager* manager)
    : CBasedVideoImageEffect(effectTitleName),
      m_importer(manager ? manager->GetImporter(importerSimpleHtmlText) : nullptr) {
    DeclareProperties(*this, properties);
    for (const Property<CTitle>& property : properties) property.Store(*this, property.Default());
}

void CTitle::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoImageEffect::OnSetProperty(name, node);
    if (StoreProperty(*this, properties, name, node)) m_ready = false;
}

bool CTitle::Seek(unsigned position) {
    m_position = position;
    return true;
}

void CTitle::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    const std::uint64_t position = m_position++;
    if (!Canvas::Takes(*frame)) return;
    const FrameKind kind{frame->GetPixelFormat(), SizeOf(*frame), Instructions()};
    if (!m_ready || kind != m_kind) {
        m_kind = kind;
        MakeLines();
    }
    Canvas canvas(*frame, Instructions());
    // Beyond, nothing changes any more.
    constexpr std::uint64_t latest = std::uint64_t(1) << 46;
    for (std::size_t i = 0; i < m_lines.size(); ++i)
        if (m_lines[i].layer) DrawLine(canvas, i, std::int64_t(std::min(position, latest)));
}

std::int32_t CTitle::FontSize() const { return m_size ? m_size : std::max(std::int32_t(m_kind.size.height / 12), 1); }

FrameOwner CTitle::RenderLine(text_t text, const std::string& line) const {
    text.text = line;
    return RenderText(m_importer, text);
}

CTitle::Rendered CTitle::Render(const text_t& text) const {
    Rendered rendered;
    for (const std::string& line : SplitList(text.text, '\n')) {
        FrameOwner frame;
        if (!line.empty()) AtBoundary(lineText, unitName, [&] { frame = RenderLine(text, line); });
        const FrameSize size = frame ? SizeOf(*frame) : FrameSize{0, unsigned(text.size)};
        rendered.block = {std::max(rendered.block.width, size.width), rendered.block.height + size.height};
        rendered.sizes.push_back(size);
        rendered.lines.push_back(std::move(frame));
    }
    return rendered;
}

void CTitle::MakeLines() {
    m_ready = true;
    m_lines.clear();
    text_t text = TextInBox();
    const point_t at = text.boxPosition, box = text.boxSize;
    AtBoundary(lineText, unitName,
               [&] { WrapText(m_importer, text, [&](const text_t& tried) { return Render(tried).block; }); });
    // All are rendered before any is made, since together they decide how large each one gets.
    const Rendered rendered = Render(text);
    const FrameSize block = rendered.block;
    if (!block.width || !block.height) return;
    const FrameSize fitted = FitText(block, box);
    m_lines.resize(rendered.lines.size());
    std::int64_t y = at.y + Before(m_valign, box.y, fitted.height);
    m_middle = {at.x + box.x / 2.0, double(y) + fitted.height / 2.0};
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        const auto scaled = [](unsigned side, unsigned to, unsigned from) {
            return unsigned(std::max<std::uint64_t>(std::uint64_t(side) * to / from, 1));
        };
        const FrameSize size{scaled(rendered.sizes[i].width, fitted.width, block.width),
                             scaled(rendered.sizes[i].height, fitted.height, block.height)};
        Line& line = m_lines[i];
        if (rendered.lines[i])
            AtBoundary(lineText, unitName,
                       [&] { LayerMaker(m_kind.Layers()).Make(*rendered.lines[i], size, line.layer, m_kind.set); });
        line.middle = {double(at.x + Before(m_align, box.x, size.width)) + size.width / 2.0,
                       double(y) + size.height / 2.0};
        y += size.height;
    }
}

text_t CTitle::TextInBox() const {
    text_t text = m_text;
    text.size = FontSize();
    if (text.boxSize.x > 0) return text;
    const auto begin = [](unsigned side) { return std::int32_t(side / 10); };
    const auto length = [](unsigned side) { return std::int32_t(side - side / 10 * 2); };
    text.boxPosition = {begin(m_kind.size.width), begin(m_kind.size.height)};
    text.boxSize = {length(m_kind.size.width), length(m_kind.size.height)};
    return text;
}

void CTitle::DrawLine(Canvas& canvas, std::size_t index, std::int64_t position) {
    const std::int64_t duration = GetDuration();
    const bool ends = duration > 1;
    std::int64_t in = m_inDuration, out = m_outDuration;
    if (ends && in + out > duration) {
        in = in * duration / (in + out);
        out = duration - in;
    }
    const auto share = [](std::int64_t done, std::int64_t whole) {
        return FixedShare(std::clamp<std::int64_t>(done, 0, whole), whole);
    };
    const std::int64_t later = std::int64_t(index) * m_lineDelay,
                       earlier = std::int64_t(m_lines.size() - 1 - index) * m_lineDelay;
    // How far it has come, and how much of it has not left.
    const std::int64_t come = share(position - later + 1, in + 1);
    const std::int64_t left = ends ? share(duration - earlier - position, out + 1) : fixedOne;
    const auto opacity = std::uint8_t(FixedEased(std::min(come, left)) * 255 / fixedOne);
    if (!opacity) return;

    // It slows down as it comes and gains speed as it leaves.
    const auto cube = [](std::int64_t t) {
        const double part = double(t) / double(fixedOne);
        return part * part * part;
    };
    constexpr double growth = 0.2;
    const double before = cube(fixedOne - come), after = cube(fixedOne - left);
    const double distance = m_distance ? m_distance : FontSize();
    const double scale = 1 - (m_inMotion.grows ? growth * before : 0) + (m_outMotion.grows ? growth * after : 0);
    const Line& line = m_lines[index];
    const auto moved = [&](double place, double middle, int inDirection, int outDirection) {
        return middle + (place - middle) * scale + distance * (outDirection * after - inDirection * before);
    };
    const Spot centre{moved(line.middle.x, m_middle.x, m_inMotion.x, m_outMotion.x),
                      moved(line.middle.y, m_middle.y, m_inMotion.y, m_outMotion.y)};
    canvas.LayTransformed(line.layer,
                          Placement::Turned(centre, line.layer.Width() * scale, line.layer.Height() * scale), opacity);
}

}  // namespace AVBased
