#pragma once

#include <string>
#include <vector>

#include "dvd_effects/menu/menu_records.h"

/// The text formats of the menu properties.
///
/// Every parser returns 1, or 0 after filing its error (code 10021008 with the message given there); a failed one
/// leaves every record as it was. `sources` points to `count` records and must not be null ("Null Pointer"). A list
/// whose number of items is not the required one is an "Invalid Param Value". Threads: any, on different records.
namespace AVBased {

/// The items between the separators, untrimmed; an empty text has none.
std::vector<std::string> SplitList(const std::string& list, char separator);
/// The decimal integer that a text starts with: 0 without one, the nearest limit beyond 32 bits.
std::int32_t ParseInteger(const std::string& text);

int GetAdditionSourceType(additionsource_t* sources, const std::string& list, unsigned count);
int GetStartPositions(additionsource_t* sources, const std::string& list, unsigned count);
int GetEndPositions(additionsource_t* sources, const std::string& list, unsigned count);
int GetMoveFormulas(additionsource_t* sources, const std::string& list, unsigned count);
int GetMoveSpeeds(additionsource_t* sources, const std::string& list, unsigned count);
int GetStartTrans(additionsource_t* sources, const std::string& list, unsigned count);
int GetEndTrans(additionsource_t* sources, const std::string& list, unsigned count);
int GetFadeSpeeds(additionsource_t* sources, const std::string& list, unsigned count);

/// One text item from its list; fewer than 12 items are an "Invalid Prama Value". A motion tail of another length than
/// its switch asks for is left out without an error.
int ParseTextInfo(text_t* text, const std::string& list);

/// A digit of 0 to 15 in lower case.
char ConvertDecimalToHex(int digit);
/// What the host's text renderer is given for an item. Nothing in it is escaped.
std::string TextHtml(const text_t& text);

}  // namespace AVBased
