#include "host/run/chunks.h"

#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <map>

#include "host/base/errors.h"
#include "host/base/interruption.h"
#include "host/base/log.h"
#include "host/base/progress.h"
#include "host/media/chunk_file.h"
#include "host/media/numbered_files.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Refuse(const std::string& line) { throw HostError(ExitCode::Input, line); }

// The coded pictures of a file, as they were stored: nothing is parsed, so that nothing can be understood differently.
class CodedPictures {
 public:
    explicit CodedPictures(const std::string& path) {
        AVFormatContext* context = avformat_alloc_context();
        if (!context) throw std::bad_alloc();
        context->flags |= AVFMT_FLAG_NOPARSE | AVFMT_FLAG_NOFILLIN;
        if (avformat_open_input(&context, ("file:" + path).c_str(), nullptr, nullptr) < 0) return;
        m_input.reset(context);
        for (unsigned i = 0; i < m_input->nb_streams; ++i) {
            AVStream* const stream = m_input->streams[i];
            if (!m_stream && stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
                m_stream = stream;
            else
                stream->discard = AVDISCARD_ALL;
        }
    }

    bool IsReadable() const { return m_stream; }
    const AVStream& Stream() const { return *m_stream; }
    std::string Mark() const {
        const AVDictionaryEntry* const entry = av_dict_get(m_input->metadata, chunkMark, nullptr, 0);
        return entry ? entry->value : "";
    }
    // Null behind the last one that can be read.
    PacketPtr Next() {
        for (;;) {
            ThrowIfInterrupted();
            PacketPtr packet = NewPacket();
            if (av_read_frame(m_input.get(), packet.get()) < 0) return nullptr;
            if (packet->stream_index == m_stream->index && !(packet->flags & AV_PKT_FLAG_DISCARD)) return packet;
        }
    }

 private:
    InputPtr m_input;
    AVStream* m_stream = nullptr;
};

struct Chunk {
    std::string path;
    FrameRange frames;
};

std::string Remedy(const std::string& output, const std::string& frames) {
    return "; make it with --chunk " + frames + ", or all that " + ChunkFolder(output) +
           " lacks by the lines of nifikral plan";
}

// The chunks of an output, in order, which together have to be the frames asked for.
std::vector<Chunk> FindChunks(const std::string& output, const FrameRange& wanted) {
    std::map<long long, Chunk> found;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(ChunkFolder(output), error)) {
        Chunk chunk{entry.path().string(), {}};
        if (std::sscanf(entry.path().filename().c_str(), "%lld-%lld", &chunk.frames.first, &chunk.frames.last) != 2 ||
            chunk.path != ChunkPath(output, chunk.frames))
            continue;
        const auto [place, added] = found.emplace(chunk.frames.first, chunk);
        if (!added) Refuse(chunk.path + " and " + place->second.path + " hold the same frames; remove one of them");
    }
    std::vector<Chunk> chunks;
    long long next = wanted.first;
    const auto missing = [&](long long last) {
        const std::string frames = RangeText({next, last});
        Refuse("the chunk of the frames " + frames + " of " + output + " is missing" + Remedy(output, frames));
    };
    for (const auto& [first, chunk] : found) {
        if (first > next) missing(std::min(first - 1, wanted.last));
        if (first < next || chunk.frames.last > wanted.last)
            Refuse(chunk.path + " is of another plan; remove it, or the whole folder, and make what is missing");
        chunks.push_back(chunk);
        next = chunk.frames.last + 1;
    }
    if (next <= wanted.last) missing(wanted.last);
    return chunks;
}

// When pictures are shown, in the order in which they are stored.
struct Timing {
    AVRational base = {1, 1};
    std::vector<std::int64_t> shown;
};

// Reads through a chunk to see that it is all there.
void Check(const Chunk& chunk, const OutputOptions& output, const MediaSink& sink, Timing& timing) {
    CodedPictures pictures(chunk.path);
    const std::string frames = RangeText(chunk.frames);
    if (!pictures.IsReadable()) Refuse(chunk.path + " is damaged; remove it" + Remedy(output.path, frames));
    if (pictures.Mark() != output.mark)
        Refuse(chunk.path + " was made by another command line; remove it" + Remedy(output.path, frames));
    const AVStream& stream = pictures.Stream();
    const bool sameTimes = timing.shown.empty() || av_cmp_q(timing.base, stream.time_base) == 0;
    if (!sameTimes || !sink.CodesAlike(*stream.codecpar))
        Refuse(chunk.path + " was coded with other libraries or settings; remove it" + Remedy(output.path, frames));
    timing.base = stream.time_base;
    long long count = 0;
    for (; const PacketPtr packet = pictures.Next(); ++count) timing.shown.push_back(packet->pts);
    if (count != chunk.frames.Count())
        Refuse(chunk.path + " has " + std::to_string(count) + " frames instead of " +
               std::to_string(chunk.frames.Count()) + "; remove it" + Remedy(output.path, frames));
}

// When pictures are decoded: in steps of those shown, so much earlier that none is shown before.
std::vector<std::int64_t> DecodingTimes(const std::vector<std::int64_t>& shown) {
    std::vector<std::int64_t> sorted = shown;
    std::sort(sorted.begin(), sorted.end());
    std::ptrdiff_t delay = 0;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const auto rank = std::lower_bound(sorted.begin(), sorted.end(), shown[i]) - sorted.begin();
        delay = std::max(delay, std::ptrdiff_t(i) - rank);
    }
    const std::int64_t step = sorted.size() > 1 ? sorted[1] - sorted[0] : 1;
    std::vector<std::int64_t> decoded;
    for (std::ptrdiff_t i = 0; i < std::ptrdiff_t(shown.size()); ++i)
        decoded.push_back(i < delay ? sorted[0] - (delay - i) * step : sorted[std::size_t(i - delay)]);
    return decoded;
}

}  // namespace

std::string RunMark(const std::vector<std::string>& words) {
    constexpr std::string_view alone[] = {"-q", "--quiet", "-v", "--verbose", "-y", "--overwrite", "--skip-existing"};
    constexpr std::string_view withValue[] = {"--threads", "--progress", "--chunk"};
    std::uint64_t sum = 14695981039346656037u;
    const auto add = [&](unsigned char byte) { sum = (sum ^ byte) * 1099511628211u; };
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string name = words[i].substr(0, words[i].find('='));
        if (std::find(std::begin(alone), std::end(alone), words[i]) != std::end(alone)) continue;
        if (std::find(std::begin(withValue), std::end(withValue), name) != std::end(withValue)) {
            if (name == words[i]) ++i;
            continue;
        }
        for (const char byte : words[i]) add(static_cast<unsigned char>(byte));
        add(0);
    }
    char text[17];
    std::snprintf(text, sizeof text, "%016" PRIx64, sum);
    return text;
}

bool IsMadeAlready(const OutputOptions& output, const FrameRange& frames) {
    std::error_code error;
    if (IsNumberedOutput(output)) {
        for (long long number = frames.first; number <= frames.last; ++number)
            if (const auto size = fs::file_size(NumberedPath(output.path, number), error); error || size == 0)
                return false;
        return true;
    }
    const std::string path = output.chunk ? ChunkPath(output.path, frames) : output.path;
    if (!fs::is_regular_file(path, error)) return false;
    if (IsPictureOutput(output)) return true;
    CodedPictures pictures(path);
    if (!pictures.IsReadable() || (output.chunk && pictures.Mark() != output.mark)) return false;
    long long count = 0;
    while (pictures.Next()) ++count;
    return count == frames.Count();
}

void JoinChunks(const OutputOptions& output, const FrameRange& frames,
                const std::function<std::vector<PacketPtr>(double)>& audioUntil, MediaSink& sink) {
    const std::vector<Chunk> chunks = FindChunks(output.path, frames);
    Timing timing;
    for (const Chunk& chunk : chunks) Check(chunk, output, sink, timing);
    const std::vector<std::int64_t> decoded = DecodingTimes(timing.shown);
    const auto writeAudio = [&](double until) {
        for (PacketPtr& packet : audioUntil(until)) sink.WriteAudio(std::move(packet));
    };
    Progress progress(frames.Count());
    std::size_t number = 0;
    for (const Chunk& chunk : chunks) {
        CodedPictures pictures(chunk.path);
        for (long long left = chunk.frames.Count(); left > 0; --left, progress.Advance()) {
            PacketPtr packet = pictures.Next();
            if (!packet) Refuse(chunk.path + " cannot be read any more; try again");
            packet->dts = decoded[number++];
            writeAudio(double(packet->dts) * av_q2d(timing.base));
            sink.WriteCoded(std::move(packet), timing.base);
        }
    }
    writeAudio(std::numeric_limits<double>::infinity());
    sink.Finish();
    std::error_code error;
    for (const Chunk& chunk : chunks) fs::remove(chunk.path, error);
    // Unless something of the user's lies there as well.
    fs::remove(ChunkFolder(output.path), error);
}

}  // namespace Nifikral
