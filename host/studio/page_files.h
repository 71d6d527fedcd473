#pragma once

#include <string>
#include <string_view>

#include "host/studio/web_message.h"

namespace Nifikral {

/// A file of the studio's page, which the program holds.
struct PageFile {
    std::string_view name, text;
};
/// All of them, the last one without a name.
extern const PageFile pageFiles[];

/// One of them, by its name, "" for the first page; from `folder` unless that is empty, for work on the page. Throws
/// WebError for one that there is none of.
WebReply PageReply(const std::string& name, const std::string& folder);

}  // namespace Nifikral
