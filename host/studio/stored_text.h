#pragma once

#include <string>

#include "host/studio/studio_folder.h"
#include "host/studio/web_message.h"

/// Texts that a studio reads and writes: project files, presets, and what is being edited.
namespace Nifikral {

/// A file's text, with a tag that changes when the text does.
WebReply ReadStoredText(const StudioFolder& folder, const std::string& path);
/// Writes it whole or not at all, and only over what the request's If-Match or If-None-Match says.
WebReply WriteStoredText(const StudioFolder& folder, const WebRequest& request);

/// Where the studio keeps what is its own, below the folder that it serves.
inline constexpr char studioFolder[] = ".nifikral-studio";
/// Throws where that folder, or a folder or file in it, is a link.
void RequireNoLink(const std::string& path);
/// Writes such a file as a whole, over what is there.
void WriteStudioFile(const StudioFolder& folder, const std::string& path, const std::string& text);

/// What a page was editing last, which it names by 4 to 16 small letters and digits; of a page that has written nothing
/// yet, what any page wrote last, or null.
WebReply ReadDraft(const StudioFolder& folder, const std::string& page);
/// Keeps what a page is editing, a JSON value. Those of the last twenty pages stay.
WebReply WriteDraft(const StudioFolder& folder, const std::string& page, const std::string& body);

}  // namespace Nifikral
