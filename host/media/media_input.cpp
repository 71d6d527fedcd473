#include "host/media/media_input.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/errors.h"
#include "host/base/interruption.h"
#include "host/media/jpeg_picture.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

int OnWait(void*) { return IsInterrupted(); }

[[noreturn]] void Refuse(const std::string& line) { throw HostError(ExitCode::Input, line); }

// What a film is follows from the heads of its pictures. Of H.264 the first one would be decoded for it, which takes
// long where it is large. Only containers that have all times of their own need no decoder to find them.
int FindStreams(AVFormatContext& input) {
    const bool isTimed = std::string_view(input.iformat->name).starts_with("mov,");
    std::vector<AVDictionary*> options(input.nb_streams);
    for (unsigned i = 0; i < input.nb_streams; ++i)
        if (isTimed && input.streams[i]->codecpar->codec_id == AV_CODEC_ID_H264)
            av_dict_set(&options[i], "skip_frame", "all", 0);
    const int error = avformat_find_stream_info(&input, options.data());
    for (AVDictionary*& entries : options) av_dict_free(&entries);
    return error;
}

// Of a picture's file, which FFmpeg and the readers have in the memory as a whole.
constexpr std::uintmax_t mostBytes = 1 << 30;

constexpr char stdinPicture[] = "the picture from stdin";

void RefuseLongPicture(const std::string& name, std::uintmax_t bytes) {
    if (bytes > mostBytes) Refuse(name + " is longer than 1 GB, so no picture that can be read; save it anew");
}

[[noreturn]] void RefuseSize(const std::string& name, const std::string& size) {
    Refuse(name + " is " + size +
           " pixels large, and no more than about 260 million can be decoded; scale it down or cut it up");
}

bool IsAddress(const std::string& path) { return path.find("://") != std::string::npos; }

// MP4 and QuickTime films are boxes one behind the other; without the one called "moov" no other means anything.
void RefuseIndexAtEnd(StandardInput& input) {
    constexpr std::size_t boxHead = 8, enough = 4096;
    const auto type = [](std::span<const std::uint8_t> box) {
        return box.size() < boxHead ? "" : std::string_view(reinterpret_cast<const char*>(box.data()) + 4, 4);
    };
    if (type(input.Peek(boxHead)) != "ftyp" && type(input.Peek(boxHead)) != "wide") return;
    for (std::span<const std::uint8_t> rest = input.Peek(enough); !type(rest).empty();) {
        if (type(rest) == "moov") return;
        if (type(rest) == "mdat")
            Refuse(
                "stdin brings a film whose index lies behind its pictures, and a pipe does not go back; give the file "
                "itself, or move its index first: ffmpeg -i IN -c copy -movflags +faststart OUT");
        const std::size_t size = rest[0] << 24 | rest[1] << 16 | rest[2] << 8 | rest[3];
        if (size < boxHead || size > rest.size()) return;
        rest = rest.subspan(size);
    }
}

// By name as well: a film may begin like a picture, and be nothing but pictures.
bool IsJpeg(const std::string& path, std::span<const std::uint8_t> head) {
    constexpr std::string_view extensions[] = {".jpg", ".jpeg", ".jpe", ".jfif"};
    std::string extension = fs::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    return head[0] == 0xff && head[1] == 0xd8 && head[2] == 0xff &&
           std::find(std::begin(extensions), std::end(extensions), extension) != std::end(extensions);
}

}  // namespace

bool IsPipe(const std::string& path) { return path == "-"; }

void CheckLocalFile(const std::string& path) {
    std::error_code error;
    if (IsPipe(path) || IsAddress(path)) return;
    if (!fs::exists(path, error)) Refuse(path + ": no such file; check the name");
    if (fs::is_directory(path, error))
        Refuse(path + " is a folder; name a file in it, or its pictures as " + path + "/%06d.png");
    if (fs::is_regular_file(path, error) && fs::file_size(path, error) == 0)
        Refuse(path + " is empty; nothing was ever written to it or its download failed");
}

InputPtr OpenInput(const std::string& path, const AVInputFormat* format, StandardInput* standardInput,
                   const FfmpegListener& listener, bool headOnly) {
    if (standardInput) RefuseIndexAtEnd(*standardInput);
    // Without the prefix a colon in a file's name would be taken for a protocol.
    const bool plainFile = !IsPipe(path) && !IsAddress(path);
    const std::string url = plainFile ? "file:" + path : IsPipe(path) ? "" : path;
    AVFormatContext* context = avformat_alloc_context();
    if (!context) throw std::bad_alloc();
    context->interrupt_callback.callback = OnWait;
    context->pb = standardInput ? standardInput->Context() : nullptr;
    AVDictionary* options = nullptr;
    if (plainFile) av_dict_set(&options, "pattern_type", "none", 0);
    int error = avformat_open_input(&context, url.c_str(), format, &options);
    av_dict_free(&options);
    InputPtr input(error < 0 ? nullptr : context);
    if (std::error_code none; plainFile && input && HoldsPictureFiles(*input) && fs::is_regular_file(path, none))
        RefuseLongPicture(path, fs::file_size(path, none));
    // Any text file passes for terminal art.
    const bool media = input && std::string(input->iformat->name) != "tty";
    const bool listed = headOnly && input && !(input->ctx_flags & AVFMTCTX_NOHEADER);
    if (media && !listed) error = FindStreams(*input);
    ThrowIfInterrupted();
    if (const std::string& size = listener.SizeRefused(); !size.empty())
        RefuseSize(standardInput ? stdinPicture : path, size);
    if (media && error >= 0) return input;
    const std::string& complaint = listener.Complaint();
    const std::string reason = !complaint.empty() ? complaint : error < 0 ? ErrorText(error) : "it is text";
    if (error == AVERROR(EACCES)) Refuse(path + ": permission denied; make it readable");
    if (standardInput)
        Refuse("stdin brings no picture or video that can be read in one pass (" + reason +
               "); give a file, or a format made for pipes such as nut, matroska or y4m");
    Refuse(path + " is no picture or video that can be read, or it is cut short (" + reason + "); give a media file");
}

bool HoldsFilm(const std::string& path) try {
    if (IsPipe(path)) return false;
    const FfmpegListener listener;
    const InputPtr input = OpenInput(path, nullptr, nullptr, listener, true);
    const int index = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    return index >= 0 && input->streams[index]->nb_frames > 1;
} catch (const HostError&) {
    return false;
}

bool HoldsPictureFiles(const AVFormatContext& input) {
    const std::string_view format = input.iformat->name;
    return format == "image2" || format.ends_with("_pipe");
}

std::unique_ptr<PictureReader> OpenPictureFile(const std::string& path, bool alone, StandardInput* standardInput,
                                               int enoughSide) try {
    if (standardInput) {
        if (!IsForPictureReader(standardInput->Peek(pictureHeadBytes))) return nullptr;
        std::vector<std::uint8_t> bytes = standardInput->ReadAll(mostBytes);
        RefuseLongPicture(stdinPicture, bytes.size());
        return OpenPictureReader(std::move(bytes));
    }
    // What is read of a named pipe is gone from it.
    if (std::error_code error; !fs::is_regular_file(path, error)) return nullptr;
    std::ifstream file(path, std::ios::binary);
    std::uint8_t head[pictureHeadBytes] = {};
    file.read(reinterpret_cast<char*>(head), sizeof head);
    if (IsForPictureReader(head)) return OpenPictureReader(ReadWholeFile(path));
    return alone && IsJpeg(path, head) ? OpenJpegPicture(ReadWholeFile(path), enoughSide) : nullptr;
} catch (const PictureTooLarge& size) {
    RefuseSize(standardInput ? stdinPicture : path, size.what());
}

InputPtr InputOf(const PictureReader& reader, const AVFrame& first) {
    InputPtr input = Require<InputPtr>(avformat_alloc_context());
    AVStream* const stream = avformat_new_stream(input.get(), nullptr);
    if (!stream) throw std::bad_alloc();
    stream->time_base = PictureReader::timeBase;
    stream->nb_frames = reader.Count();
    stream->codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
    stream->codecpar->width = first.width;
    stream->codecpar->height = first.height;
    stream->r_frame_rate = stream->avg_frame_rate = {PictureReader::timeBase.den, int(first.pkt_duration)};
    return input;
}

std::vector<std::uint8_t> ReadWholeFile(const std::string& path) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    if (!error) RefuseLongPicture(path, size);
    std::vector<std::uint8_t> bytes(error ? 0 : std::size_t(size));
    std::ifstream file(path, std::ios::binary);
    if (!file.read(reinterpret_cast<char*>(bytes.data()), std::streamsize(bytes.size()))) bytes.clear();
    return bytes;
}

}  // namespace Nifikral
