#include "host/media/heif_picture.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/intreadwrite.h>
}
#include <libheif/heif.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "host/base/lazy_library.h"

namespace Nifikral {
namespace {

// Most runs see no such picture, and it brings an encoder for each kind.
struct Library {
    LazyLibrary library{"libheif.so.1"};
    Lazy<decltype(heif_context_alloc)> contextAlloc{library, "heif_context_alloc"};
    Lazy<decltype(heif_context_free)> contextFree{library, "heif_context_free"};
    Lazy<decltype(heif_context_get_primary_image_handle)> contextGetPrimaryImageHandle{
        library, "heif_context_get_primary_image_handle"};
    Lazy<decltype(heif_context_read_from_memory_without_copy)> contextReadFromMemoryWithoutCopy{
        library, "heif_context_read_from_memory_without_copy"};
    Lazy<decltype(heif_decode_image)> decodeImage{library, "heif_decode_image"};
    Lazy<decltype(heif_decoding_options_alloc)> decodingOptionsAlloc{library, "heif_decoding_options_alloc"};
    Lazy<decltype(heif_decoding_options_free)> decodingOptionsFree{library, "heif_decoding_options_free"};
    Lazy<decltype(heif_image_get_bits_per_pixel_range)> imageGetBitsPerPixelRange{
        library, "heif_image_get_bits_per_pixel_range"};
    Lazy<decltype(heif_image_get_plane_readonly)> imageGetPlaneReadonly{library, "heif_image_get_plane_readonly"};
    Lazy<decltype(heif_image_get_primary_height)> imageGetPrimaryHeight{library, "heif_image_get_primary_height"};
    Lazy<decltype(heif_image_get_primary_width)> imageGetPrimaryWidth{library, "heif_image_get_primary_width"};
    Lazy<decltype(heif_image_handle_get_luma_bits_per_pixel)> imageHandleGetLumaBitsPerPixel{
        library, "heif_image_handle_get_luma_bits_per_pixel"};
    Lazy<decltype(heif_image_handle_get_raw_color_profile)> imageHandleGetRawColorProfile{
        library, "heif_image_handle_get_raw_color_profile"};
    Lazy<decltype(heif_image_handle_get_raw_color_profile_size)> imageHandleGetRawColorProfileSize{
        library, "heif_image_handle_get_raw_color_profile_size"};
    Lazy<decltype(heif_image_handle_get_height)> imageHandleGetHeight{library, "heif_image_handle_get_height"};
    Lazy<decltype(heif_image_handle_get_width)> imageHandleGetWidth{library, "heif_image_handle_get_width"};
    Lazy<decltype(heif_image_handle_has_alpha_channel)> imageHandleHasAlphaChannel{
        library, "heif_image_handle_has_alpha_channel"};
    Lazy<decltype(heif_image_handle_release)> imageHandleRelease{library, "heif_image_handle_release"};
    Lazy<decltype(heif_image_release)> imageRelease{library, "heif_image_release"};
};

const Library& Heif() {
    static const Library library;
    return library;
}

struct FreeHeif {
    void operator()(heif_context* context) const { Heif().contextFree(context); }
    void operator()(heif_image_handle* handle) const { Heif().imageHandleRelease(handle); }
    void operator()(heif_image* image) const { Heif().imageRelease(image); }
    void operator()(heif_decoding_options* options) const { Heif().decodingOptionsFree(options); }
};
template <class Object>
using HeifPtr = std::unique_ptr<Object, FreeHeif>;

void Check(const heif_error& error) {
    if (error.code == heif_error_Ok) return;
    // What comes behind the first line says where in the library it was.
    const std::string_view message = error.message;
    throw PictureFault(std::string(message.substr(0, message.find('\n'))));
}

// Samples of `bits` become such of 16, in place.
void WidenRow(std::uint8_t* row, int samples, int bits) {
    for (std::uint8_t* const end = row + std::ptrdiff_t(samples) * 2; row != end; row += 2) {
        const unsigned value = AV_RL16(row);
        AV_WL16(row, value << (16 - bits) | value >> (2 * bits - 16));
    }
}

FramePtr Decode(const heif_image_handle& handle) {
    const bool alpha = Heif().imageHandleHasAlphaChannel(&handle);
    const bool deep = Heif().imageHandleGetLumaBitsPerPixel(&handle) > 8;
    const HeifPtr<heif_decoding_options> options(Heif().decodingOptionsAlloc());
    options->strict_decoding = true;
    const heif_chroma layout = deep ? (alpha ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RRGGBB_LE)
                                    : (alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB);
    const AVPixelFormat format =
        deep ? (alpha ? AV_PIX_FMT_RGBA64LE : AV_PIX_FMT_RGB48LE) : (alpha ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGB24);
    heif_image* decoded = nullptr;
    Check(Heif().decodeImage(&handle, &decoded, heif_colorspace_RGB, layout, options.get()));
    const HeifPtr<heif_image> image(decoded);
    int pitch = 0;
    const std::uint8_t* const pixels = Heif().imageGetPlaneReadonly(image.get(), heif_channel_interleaved, &pitch);
    if (!pixels) throw PictureFault("it has no pixels");
    FramePtr frame = NewPicture(format, Heif().imageGetPrimaryWidth(decoded), Heif().imageGetPrimaryHeight(decoded));
    const int rowBytes = av_image_get_linesize(format, frame->width, 0);
    av_image_copy_plane(frame->data[0], frame->linesize[0], pixels, pitch, rowBytes, frame->height);
    const int bits = Heif().imageGetBitsPerPixelRange(decoded, heif_channel_interleaved);
    for (int y = 0; deep && bits > 8 && bits < 16 && y < frame->height; ++y)
        WidenRow(frame->data[0] + std::ptrdiff_t(y) * frame->linesize[0], rowBytes / 2, bits);
    return frame;
}

class HeifPicture final : public PictureReader {
 public:
    explicit HeifPicture(FramePtr picture) : m_picture(std::move(picture)) {}
    FramePtr Next() override { return std::move(m_picture); }
    int Count() const override { return 1; }

 private:
    FramePtr m_picture;
};

}  // namespace

bool IsHeifPicture(std::span<const std::uint8_t> head) {
    constexpr std::string_view stills[] = {"heic", "heix", "heim", "heis", "mif1", "avif"};
    constexpr std::size_t needed = 12;
    const std::string_view text(reinterpret_cast<const char*>(head.data()), std::min(head.size(), needed));
    return text.size() == needed && text.substr(4, 4) == "ftyp" &&
           std::find(std::begin(stills), std::end(stills), text.substr(8)) != std::end(stills);
}

std::unique_ptr<PictureReader> OpenHeifPicture(std::span<const std::uint8_t> file) {
    const HeifPtr<heif_context> context = Require<HeifPtr<heif_context>>(Heif().contextAlloc());
    Check(Heif().contextReadFromMemoryWithoutCopy(context.get(), file.data(), file.size(), nullptr));
    heif_image_handle* primary = nullptr;
    Check(Heif().contextGetPrimaryImageHandle(context.get(), &primary));
    const HeifPtr<heif_image_handle> handle(primary);
    RequirePixels(Heif().imageHandleGetWidth(handle.get()), Heif().imageHandleGetHeight(handle.get()));
    FramePtr frame = Decode(*handle);
    frame->color_range = AVCOL_RANGE_JPEG;
    frame->colorspace = AVCOL_SPC_RGB;
    if (const std::size_t size = Heif().imageHandleGetRawColorProfileSize(handle.get()); size > 0)
        if (AVFrameSideData* const data = av_frame_new_side_data(frame.get(), AV_FRAME_DATA_ICC_PROFILE, size))
            Check(Heif().imageHandleGetRawColorProfile(handle.get(), data->data));
    frame->pts = 0;
    frame->pkt_duration = PictureReader::stillDuration;
    return std::make_unique<HeifPicture>(std::move(frame));
}

}  // namespace Nifikral
