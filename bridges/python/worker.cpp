#include "bridges/python/worker.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <sstream>

#include "avbase/avbase_srcutils/pixel_formats.h"
#include "bridges/python/library.h"
#include "host/base/errors.h"
#include "host/catalogue/catalogue.h"
#include "host/media/ffmpeg_handles.h"
#include "host/media/picture_formats.h"
#include "host/run/effect_chain.h"
#include "host/run/request_chain.h"

namespace Nifikral::Python {
namespace {

using AVBased::formatRgba32;

constexpr char durationName[] = "duration";
constexpr char titleName[] = "title";

unsigned TraitsOf(const EffectRequest& request) {
    const EffectInfo* const info = FindEffect(request.effect);
    return info ? info->traits : plain;
}

long long DurationOf(const EffectRequest& request) {
    for (const ParameterSetting& setting : request.settings)
        if (setting.property == durationName)
            if (const std::vector<double> numbers = setting.value.Numbers(); !numbers.empty())
                return std::llround(numbers.front());
    return 0;
}

void RequireUsable(const EffectRequest& request) {
    const unsigned traits = TraitsOf(request);
    if ((traits & generator) && request.effect != titleName)
        throw HostError(ExitCode::Usage, request.effect + " makes pictures of its own; call nifikral." +
                                             (traits & menu ? "menu(\"menu.json\")" : "slideshow([...])") +
                                             " for its frames");
    if (request.NeedsFrameCount() && DurationOf(request) == 0)
        throw HostError(ExitCode::Usage,
                        request.effect + " depends on the number of frames that it works on; give duration=N");
}

std::vector<PlacedEffect> PlacedOn(const std::vector<EffectRequest>& requests, const Scale& scale, unsigned format) {
    std::vector<PlacedEffect> placed;
    for (const EffectRequest& request : requests) {
        const long long frames = DurationOf(request);
        const Extent extent{scale, FfmpegFormat(format), {}, frames, [frames](const FrameRange&) { return frames; }};
        std::ranges::move(PlaceEffects({request}, TheModule(), extent), std::back_inserter(placed));
    }
    return placed;
}

// The layout of planes by the size of those of chroma.
struct PlanarLayout {
    unsigned format;
    int columnShift, rowShift;
    unsigned withAlpha;  // the same with a plane of it; 0 where there is none
};
constexpr PlanarLayout planarLayouts[] = {{0, 1, 1, 35}, {60, 0, 0, 60}, {4, 1, 0, 0}, {7, 2, 0, 0}, {6, 2, 2, 0}};

std::ptrdiff_t Shifted(std::ptrdiff_t side, int shift) { return -(-side >> shift); }

const PlanarLayout& LayoutOf(const std::vector<ArrayView>& planes) {
    const ArrayView &luma = planes[0], &first = planes[1], &second = planes[2];
    if (planes.size() == 4 && (planes[3].width != luma.width || planes[3].height != luma.height))
        throw py::value_error("the plane of alpha is not as large as that of luma");
    if (first.width == second.width && first.height == second.height)
        for (const PlanarLayout& layout : planarLayouts)
            if (first.width == Shifted(luma.width, layout.columnShift) &&
                first.height == Shifted(luma.height, layout.rowShift) && (planes.size() == 3 || layout.withAlpha))
                return layout;
    std::ostringstream line;
    line << "planes of " << luma.height << " x " << luma.width << ", " << first.height << " x " << first.width
         << " and " << second.height << " x " << second.width << " are no layout that effects know; for this luma, "
         << "both planes of chroma are " << Shifted(luma.height, 1) << " x " << Shifted(luma.width, 1) << " in 4:2:0";
    throw py::value_error(line.str());
}

}  // namespace

// A picture as the chain sees it, in planes without padding.
struct Worker::Planes {
    unsigned format;
    int width, height;
    std::array<std::uint8_t*, 4> data{};
    std::array<int, 4> pitch{};
};

struct Worker::State {
    std::mutex mutex;
    unsigned format = 0;
    int width = 0, height = 0;
    std::vector<PlacedEffect> placed;
    std::optional<EffectChain> chain;
    long long next = 0;
    std::array<std::vector<std::uint8_t>, 4> scratch;

    // Memory of at least so many bytes.
    std::uint8_t* Scratch(std::size_t plane, std::size_t bytes) {
        if (scratch[plane].size() < bytes) scratch[plane].resize(bytes);
        return scratch[plane].data();
    }
};

std::vector<EffectRequest> RequestsOf(const std::vector<AskedEffect>& asked) {
    std::vector<EffectRequest> requests;
    for (const AskedEffect& one : asked) {
        if (one.settings.empty()) {
            std::ranges::move(ParseEffectRequests({one.request}, TheModule(), ""), std::back_inserter(requests));
            continue;
        }
        if (one.request.starts_with('@'))
            throw HostError(ExitCode::Usage, one.request + " is a preset, which takes no parameters");
        RequestParts parts(one.request);
        parts.pairs.insert(parts.pairs.end(), one.settings.begin(), one.settings.end());
        requests.push_back(CheckedRequest(std::move(parts), TheModule()));
    }
    return requests;
}

Worker::Worker(std::vector<EffectRequest> requests, Order order, double frameRate)
    : m_requests(std::move(requests)),
      m_order(order),
      m_frameRate(frameRate),
      m_process(getpid()),
      m_state(std::make_unique<State>()) {
    for (const EffectRequest& request : m_requests) {
        RequireUsable(request);
        m_traits |= TraitsOf(request);
    }
}

Worker::~Worker() {
    // What another process has left in the middle of its work cannot be ended.
    if (m_process != getpid()) static_cast<void>(m_state.release());
}

Worker::State& Worker::Own() {
    if (m_process != getpid()) {
        static_cast<void>(m_state.release());
        m_state = std::make_unique<State>();
        m_process = getpid();
    }
    return *m_state;
}

py::object Worker::Process(const py::object& picture, const py::object& out, std::optional<long long> position) {
    if (position && (*position < 0 || *position >= std::numeric_limits<int>::max()))
        throw py::value_error("position is " + std::to_string(*position) + "; frames count from 0");
    const bool isPlanar = py::isinstance<py::tuple>(picture) || py::isinstance<py::list>(picture);
    if (isPlanar) return ProcessPlanar(Own(), py::reinterpret_borrow<py::sequence>(picture), out, position);
    return ProcessPacked(Own(), picture, out, position);
}

void Worker::Run(State& state, const Planes& planes, bool overBlack, std::optional<long long> position) const {
    if (!state.chain || state.format != planes.format || state.width != planes.width || state.height != planes.height) {
        state.chain.reset();
        state.placed = PlacedOn(m_requests, {planes.width, planes.height, m_frameRate}, planes.format);
        state.chain.emplace(TheModule(), state.placed);
        state.format = planes.format;
        state.width = planes.width;
        state.height = planes.height;
    }
    const FramePtr frame = NewFrame();
    frame->format = FfmpegFormat(planes.format);
    frame->width = planes.width;
    frame->height = planes.height;
    const bool packed = planes.format == formatRgba32;
    frame->colorspace = packed ? AVCOL_SPC_RGB : AVCOL_SPC_UNSPECIFIED;
    frame->color_range = packed ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    std::copy(planes.data.begin(), planes.data.end(), frame->data);
    std::copy(planes.pitch.begin(), planes.pitch.end(), frame->linesize);
    const long long number = position.value_or(state.next);
    state.chain->Process(*frame, planes.format, number);
    state.next = number + 1;
    if (overBlack) LayOverBlack(*frame);
}

py::object Worker::ProcessPacked(State& state, const py::object& picture, const py::object& out,
                                 std::optional<long long> position) {
    const ArrayView from = ViewOfPicture(picture, "picture");
    py::object result = out.is_none() ? py::object(LikeArray(picture)) : out;
    const ArrayView to = ViewOfPicture(result, "out");
    if (to.height != from.height || to.width != from.width || to.channels != from.channels)
        throw py::value_error("out is not of the picture's shape");
    RequireWriteable(result, "out");
    ArrayLock lock;
    lock.Add(picture);
    lock.Add(result);
    // Where red and blue are the same to all effects, a picture with alpha need not be turned.
    const bool hasAlpha = from.channels == 4;
    const Order order = hasAlpha && !(m_traits & (knowsRedFromBlue | generator)) ? Order::Bgr : m_order;
    const bool inPlace = hasAlpha && to.IsContiguous() && (from.SameElementsAs(to) || !from.Meets(to));
    Unlocked([&] {
        const std::lock_guard guard(state.mutex);
        std::uint8_t* const work =
            inPlace ? to.data : state.Scratch(0, std::size_t(from.height) * std::size_t(from.width) * 4);
        if (work != from.data || order == Order::Rgb) ToBgra(from, order, work);
        Run(state, {formatRgba32, int(from.width), int(from.height), {work}, {int(from.width) * 4}},
            !hasAlpha && (m_traits & changesAlpha), position);
        if (!inPlace || order == Order::Rgb) FromBgra(work, to, order);
    });
    return result;
}

py::object Worker::ProcessPlanar(State& state, const py::sequence& picture, const py::object& out,
                                 std::optional<long long> position) {
    constexpr const char* names[] = {"luma", "the first plane of chroma", "the second plane of chroma", "alpha"};
    const std::size_t count = picture.size();
    if (count != 3 && count != 4)
        throw py::value_error("a planar picture has 3 planes, or 4 with alpha, and not " + std::to_string(count));
    std::vector<ArrayView> from, to;
    for (std::size_t p = 0; p < count; ++p) from.push_back(ViewOfPlane(picture[p], names[p]));
    const PlanarLayout& layout = LayoutOf(from);
    const bool showsInAlpha = count == 3 && (m_traits & changesAlpha);
    const bool ownAlpha = count == 3 && (showsInAlpha || layout.format == layout.withAlpha);
    if (ownAlpha && !layout.withAlpha)
        throw py::value_error(
            "these effects change the opacity, which planes of this layout have none of; give 4:2:0 "
            "or 4:4:4, or a packed picture");

    py::list planes;
    ArrayLock lock;
    if (!out.is_none() && (!py::isinstance<py::sequence>(out) || py::len(out) != count))
        throw py::value_error("out is not of as many planes as the picture");
    for (std::size_t p = 0; p < count; ++p) {
        const py::object plane = picture[p];
        const py::object result =
            out.is_none() ? py::object(LikeArray(plane)) : py::reinterpret_borrow<py::sequence>(out)[p];
        to.push_back(ViewOfPlane(result, "out"));
        if (to[p].width != from[p].width || to[p].height != from[p].height)
            throw py::value_error(std::string("out: ") + names[p] + " is not of the picture's shape");
        RequireWriteable(result, "out");
        lock.Add(plane);
        lock.Add(result);
        planes.append(result);
    }
    Unlocked([&] {
        const std::lock_guard guard(state.mutex);
        Planes work{ownAlpha || count == 4 ? layout.withAlpha : layout.format, int(from[0].width), int(from[0].height)};
        for (std::size_t p = 0; p < count; ++p) {
            // A plane may be a part of the same array as another one: what is read has to be there still.
            const bool meets = std::ranges::any_of(
                from, [&](const ArrayView& other) { return to[p].Meets(other) && !to[p].SameElementsAs(other); });
            const bool direct = to[p].IsContiguous() && !meets;
            work.data[p] = direct ? to[p].data : state.Scratch(p, from[p].Bytes());
            work.pitch[p] = int(from[p].width);
            if (work.data[p] == from[p].data) continue;
            ArrayView dense = from[p];
            dense.data = work.data[p];
            dense.rowStep = dense.width;
            dense.columnStep = 1;
            CopyElements(from[p], dense);
        }
        if (ownAlpha) {
            work.data[3] = state.Scratch(3, from[0].Bytes());
            work.pitch[3] = work.width;
            std::memset(work.data[3], 255, from[0].Bytes());
        }
        Run(state, work, showsInAlpha, position);
        for (std::size_t p = 0; p < count; ++p) {
            if (work.data[p] == to[p].data) continue;
            ArrayView dense = to[p];
            dense.data = work.data[p];
            dense.rowStep = dense.width;
            dense.columnStep = 1;
            CopyElements(dense, to[p]);
        }
    });
    return py::tuple(planes);
}

}  // namespace Nifikral::Python
