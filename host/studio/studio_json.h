#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "host/films/project_reader.h"

/// JSON between a studio's page and its server. What is wrong with it throws WebError with the status 400.
namespace Nifikral {

/// Parses what a page has sent. Refuses what is nested deeper than any request needs.
Json ParseWebJson(const std::string& text);
/// As it is sent. Texts that are no UTF-8 are mended.
std::string JsonText(const Json& json);

/// A member of an object; the fallback where there is none, or null.
std::string TextIn(const Json& object, const char* key, const std::string& fallback = "");
double NumberIn(const Json& object, const char* key, double low, double high, double fallback);
int IntegerIn(const Json& object, const char* key, int low, int high, int fallback);
bool FlagIn(const Json& object, const char* key);
/// Null where there is none.
const Json* MemberOf(const Json& object, const char* key);
/// The entries of a list; none where there is none.
const Json& ListIn(const Json& object, const char* key);

}  // namespace Nifikral
