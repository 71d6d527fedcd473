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

WebReply ReadDraft();
WebReply WriteDraft(const std::string& body);

}  // namespace Nifikral
