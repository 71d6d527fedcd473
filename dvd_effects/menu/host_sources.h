#pragma once

#include <string>

#include "TarvoBased/error_codes.h"
#include "dvd_effects/menu/menu_records.h"

/// Opening pictures, videos and texts through the host's interfaces.
namespace AVBased {

/// Opens a file as a picture, which is set to last 5 seconds, or as whatever the host finds in it. Raises "Null
/// Pointer" for a null manager; the host's error, or `message` when the host gives nothing and files nothing; "Param
/// Error" for a picture whose length cannot be set.
SourceOwner OpenSource(IAVManager* manager, const std::string& path, bool isImage,
                       const char* message = TarvoBased::textNullPointer);
/// The source's next frame. Raises the host's error, or "Null Pointer".
FrameOwner ReadFrame(IAVSource& source);

// The operations below return 1, or 0 after filing their error (10021008 with the message given there). What they make
// replaces what the reference held; a failed call leaves the reference null.

/// A new array of `n` null pointers; the caller releases it with delete[]. Error: "Create Pointer Failed".
int InitAVSources(IAVSource**& sources, int n);
int InitAVPropSet(IAVSourcePropertySet**& sets, int n);

/// Opens every file of a ";" list of paths, as a picture where the same item of `kinds` is "true". `sources` and `sets`
/// become arrays with an entry for each: the caller frees every source with Free() and the arrays with delete[]. A
/// picture is set to last 5 seconds, through its entry of `sets`; that of a video is null. Errors: "Null Pointer" for a
/// null manager; "Param Error" when the lists differ in length, a file cannot be opened or a picture has no such
/// settings; "Create Pointer Failed".
int CreateAVSources(IAVManager* manager, IAVSource**& sources, IAVSourcePropertySet**& sets, const std::string& paths,
                    const std::string& kinds);

/// A source that renders a text item, and its renderer (borrowed from the source, which the caller frees). Errors:
/// "Null Pointer" for a null importer; the host's own error, or "Null Pointer", when it gives no source or no renderer.
int CreateTextRender(IAVImporter* importer, IAVSource*& source, ISimpleHTMLRender*& render, const text_t& text);

/// A text item as the host renders it. Null after filing an error of CreateTextRender; raises those of ReadFrame.
FrameOwner RenderText(IAVImporter* importer, const text_t& text);

}  // namespace AVBased
