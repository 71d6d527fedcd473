#pragma once

#include <cstdint>
#include <limits>
#include <mutex>
#include <string>

struct AVCodecContext;

/// FFmpeg's messages, each given to the decoding that it is about: many may run at once.
namespace Nifikral {

/// Keeps FFmpeg's messages off the terminal, except under -v, and hands them to the objects below. For programs of our
/// own: in a plug-in the messages belong to the program around it.
void CaptureFfmpegMessages();
bool CapturesFfmpegMessages();

/// Hears what FFmpeg says on this thread while it lives; of several, the innermost does.
class FfmpegListener {
 public:
    FfmpegListener();
    ~FfmpegListener();
    FfmpegListener(const FfmpegListener&) = delete;
    FfmpegListener& operator=(const FfmpegListener&) = delete;

    /// The last error, as a reason to quote; "" without one.
    const std::string& Complaint() const { return m_complaint; }
    /// The size of a picture that is too large to be decoded, as in "40000x30000"; "" without one.
    const std::string& SizeRefused() const { return m_sizeRefused; }
    /// Whether a container was said to end before its end.
    bool EndedEarly() const { return m_endedEarly; }

    void Hear(const std::string& text, bool isError, bool isOfContainer);

 private:
    FfmpegListener* m_outer;
    std::string m_complaint, m_sizeRefused;
    bool m_endedEarly = false;
};

/// The first damage in what one decoder was given. A decoder's threads run ahead of the pictures that leave it, by more
/// the more there are, so that damage counts from the packet it lies in. Threads: any.
class DamageLog {
 public:
    static constexpr std::int64_t allPackets = std::numeric_limits<std::int64_t>::max();

    /// Takes over what `decoder` says; it must be closed before this object goes. Its reordered_opaque is the number of
    /// the packet that it is given next.
    void Attach(AVCodecContext& decoder);
    void Add(std::int64_t packet, const std::string& what);
    /// The first damage if it lies in a packet up to this one; "" otherwise.
    std::string UpTo(std::int64_t packet) const;

    void Hear(const AVCodecContext& decoder, const std::string& text);

 private:
    mutable std::mutex m_mutex;
    std::int64_t m_packet = allPackets;
    std::string m_what;
};

}  // namespace Nifikral
