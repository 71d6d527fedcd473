#pragma once

#include "avbase/IRawVideoFrame.h"

/// What a host gives to the generators: pictures, videos and rendered text as sources of frames. The module only calls
/// these interfaces. Threads: a generator and everything that it opened are used by one thread at a time. Errors: an
/// operation that fails returns null or false and files why, as in IAVProc.
namespace AVBased {

/// The importers that the generators ask for by name.
inline constexpr char importerImage[] = "ImageImporter";
inline constexpr char importerSimpleHtmlText[] = "SimpleHTMLTextImporter";

/// Something that yields frames: a picture, a video or a text.
class IAVSource {
 public:
    /// An interface of this source ("ISimpleHTMLRender" and "ITextLines" of a text, "IAVSourceSetProperty" of a
    /// picture); borrowed, valid as long as the source. Null (10021009) for any other.
    virtual void* GetInterface(const char* name) = 0;
    /// The current frame, and a step to the next one: a video starts over after its last frame, a picture or a text
    /// stays. The caller releases the frame with Free(); it may outlive the source. It is shared, and must not be
    /// changed, where its CanBeModified() is false. Null on failure.
    virtual IRawVideoFrame* ReadFrame() = 0;
    /// Whether every frame is the same: a reader may keep the first one and release the source.
    virtual bool IsStill() = 0;
    /// Releases the source.
    virtual void Free() = 0;

 protected:
    ~IAVSource() = default;
};

/// Settings of a source, under the interface name "IAVSourceSetProperty". Every source of the importer "ImageImporter"
/// has them: a generator sets how long each of its pictures lasts, and shows none without.
class IAVSourcePropertySet {
 public:
    static constexpr char name[] = "IAVSourceSetProperty";
    /// How long a still picture lasts, in milliseconds.
    static constexpr int stillDuration = 2;

    virtual bool SetProperty(int identifier, int value) = 0;

 protected:
    ~IAVSourcePropertySet() = default;
};

/// Renders styled text, under the interface name "ISimpleHTMLRender".
class ISimpleHTMLRender {
 public:
    static constexpr char name[] = "ISimpleHTMLRender";

    /// The text to render: one element <font color='#rrggbb' size='pixels' face='family' fontstyle='words'>text</font>,
    /// in UTF-8, with line feeds between lines; the text itself is taken as written, markup characters included. The
    /// source's frames then have format 30, just large enough for the text, transparent around the glyphs, colours not
    /// multiplied by alpha. False (10021010) for a text of another form.
    virtual bool SetHTML(const char* html) = 0;

 protected:
    ~ISimpleHTMLRender() = default;
};

/// Breaks the text of ISimpleHTMLRender into lines, under the interface name "ITextLines". A host may lack it: texts
/// are then made smaller instead.
class ITextLines {
 public:
    static constexpr char name[] = "ITextLines";

    /// The text that was set, with line feeds where it has to break so that its frame gets no wider than `width`
    /// pixels: as few as possible, with lines of similar length. Its own line feeds stay. Breaks fall between words,
    /// and with `withinWords` also within a word that is too wide. Borrowed until the next call; null on failure.
    virtual const char* BreakLines(unsigned width, bool withinWords) = 0;

 protected:
    ~ITextLines() = default;
};

/// One way of making sources.
class IAVImporter {
 public:
    /// A new source, empty until its content is set; the caller releases it with Free(). Null on failure.
    virtual IAVSource* CreateSource() = 0;

 protected:
    ~IAVImporter() = default;
};

/// The host's entry point for generators; it outlives them all.
class IAVManager {
 public:
    /// The importer of that name; borrowed, valid as long as the manager. Null (10021005) for an unknown one.
    virtual IAVImporter* GetImporter(const char* importerName) = 0;
    /// Opens a file with the importer of that name; an empty name leaves the choice to the host. The caller releases
    /// the source with Free(). Null when the file cannot be opened: the filed error names it.
    virtual IAVSource* OpenSource(const char* path, const char* importerName) = 0;

 protected:
    ~IAVManager() = default;
};

}  // namespace AVBased
