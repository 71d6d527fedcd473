#pragma once

#include <memory>
#include <string>
#include <vector>

#include "dvd_effects/menu/menu_picture.h"

namespace AVBased {

/// How a picture of another shape fills its box: as far as its aspect ratio allows; or all of it, with what then stands
/// out on two sides cut off; or as a stage does, where one that would lose much is shown whole before a blurred, darker
/// enlargement of itself.
enum class PictureFit { Contain, Cover, Stage };

/// What a menu says of its pictures.
class PictureRules {
 public:
    /// The box of a source whose picture has the size `own`. A box of 0 or above largestSide is an "Invalid Param
    /// Value".
    virtual FrameSize BoxOf(unsigned index, FrameSize own) const = 0;
    virtual PictureFit Fit() const { return PictureFit::Contain; }
    /// Changes a source's picture before it is drawn: once, and each new frame of a video.
    virtual void FinishPicture(Layer&, unsigned /*index*/) const {}

 protected:
    ~PictureRules() = default;
};

/// A source that has a picture.
struct ShownSource {
    const additionsource_t& source;
    const Layer& layer;
    bool isOpaque;               ///< whether all of the picture is
    point_t inBox;               ///< where in its box the picture lies
    std::deque<Layer>& smaller;  ///< a place for copies of the picture, kept for as long as it stays the same
    unsigned number;             ///< in the lists
    FrameSize own;               ///< of the picture before it was finished: larger ones have it in their middle
};

/// The pictures and videos of a menu: the records that its list properties fill, and how each looks. A file that cannot
/// be opened is filed once; a video that gives no frame any more keeps showing its last one.
class MenuSources {
 public:
    using ParseList = int (*)(additionsource_t*, const std::string&, unsigned);

    /// Starts anew with so many records; raises "Invalid Param Value" for a number below 0 or above 4096.
    void SetCount(std::int32_t count);
    unsigned Count() const { return m_count; }
    /// Fills the records by one of the parsers, and raises what it files.
    void SetList(ParseList parse, const std::string& list);
    void SetPaths(const std::string& list);
    void SetMaskPaths(const std::string& list);
    /// Deliberate: a second list is appended to the first one, and the number of items is not checked.
    void AddSizes(const std::string& list);
    bool HasSizeOf(unsigned index) const { return std::size_t(index) * 2 + 1 < m_sizes.size(); }
    /// A source's size, else `own`. Raises "Invalid Param Value" for one of 0 or above largestSide.
    FrameSize SizeOf(unsigned index, FrameSize own) const;

    /// Opens them anew for the next frame.
    void Forget() { m_isReady = false; }
    /// Opens what is not open yet; errors are filed.
    void Prepare(IAVManager* manager, const FrameKind& kind, const PictureRules& rules);
    /// Takes the next frame of every video; errors are filed.
    void Advance(const PictureRules& rules);
    /// Whether any is a video, once they were opened.
    bool HasVideos() const;
    /// Reads past so many frames of every video; errors are filed. Before they are opened, past so many more as soon as
    /// they are, or fewer for a number below 0.
    void Pass(std::int64_t frames);
    /// In their order; valid until something is set or the next frame is taken.
    std::vector<ShownSource> Shown() const;

 private:
    void AdvanceOne(unsigned index, const PictureRules& rules);

    unsigned m_count = 0;
    std::unique_ptr<additionsource_t[]> m_records;
    std::vector<std::int32_t> m_sizes;
    std::string m_paths, m_maskPaths;
    std::vector<MenuPicture> m_pictures;
    std::int64_t m_toPass = 0;
    bool m_isReady = false;
};

}  // namespace AVBased
