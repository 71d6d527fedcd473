#include "TarvoBased/StringImpl.h"

#include <algorithm>
#include <iterator>

#include "TarvoBased/CBaseException.h"
#include "TarvoBased/boundary.h"
#include "TarvoBased/error_codes.h"

namespace TarvoBased {
namespace {

constexpr char sourceName[] = "../dependency/TarvoBased/StringImpl";

// Lines that the host reads beside an error of these operations.
enum Line : int {
    lineSetStr = 20,
    lineSetData = 30,
    lineConcat = 40,
    lineAppend = 50,
    lineInsert = 60,
    lineInsertString = 70,
    lineRemove = 80,
    lineFind = 90,
    lineFindString = 100,
    lineGetString = 110,
};

void RequireIndex(int index, int end, int line) {
    if (index < 0 || index >= end) throw CBaseException(errorBadIndex, textBadIndex, line, sourceName);
}

// Raw bytes as text; null stands for no bytes at all.
const char* Bytes(const void* data, unsigned size, int line) {
    if (size) RequirePointer(data, line, sourceName);
    return size ? static_cast<const char*>(data) : "";
}

template <class Range, class Predicate>
int RequireFound(const Range& range, Predicate&& predicate, int line) {
    const auto found = std::find_if(range.begin(), range.end(), predicate);
    if (found == range.end()) throw CBaseException(errorNotFound, textResourceNotFound, line, sourceName);
    return static_cast<int>(std::distance(range.begin(), found));
}

}  // namespace

bool CStringImpl::SetStr(const char* text) {
    return AtBoundary(lineSetStr, sourceName, [&] {
        RequirePointer(text, lineSetStr, sourceName);
        m_text = text;
        return true;
    });
}

bool CStringImpl::SetData(const void* data, unsigned size) {
    return AtBoundary(lineSetData, sourceName, [&] {
        m_text.assign(Bytes(data, size, lineSetData), size);
        return true;
    });
}

bool CStringImpl::Concat(const char* text) {
    return AtBoundary(lineConcat, sourceName, [&] {
        RequirePointer(text, lineConcat, sourceName);
        m_text.append(text);
        return true;
    });
}

bool CStringImpl::Append(const void* data, unsigned size) {
    return AtBoundary(lineAppend, sourceName, [&] {
        m_text.append(Bytes(data, size, lineAppend), size);
        return true;
    });
}

bool CStringsImpl::Insert(int index, IString* string) {
    return AtBoundary(lineInsert, sourceName, [&] {
        RequirePointer(string, lineInsert, sourceName);
        RequireIndex(index, GetCount() + 1, lineInsert);
        for (const Owned& own : m_strings)
            if (own.get() == string) throw CBaseException(errorDuplicated, textDuplicated, lineInsert, sourceName);
        m_strings.insert(m_strings.begin() + index, nullptr)->reset(string);
        return true;
    });
}

bool CStringsImpl::InsertString(int index, const char* text) {
    return AtBoundary(lineInsertString, sourceName, [&] {
        RequirePointer(text, lineInsertString, sourceName);
        RequireIndex(index, GetCount() + 1, lineInsertString);
        m_strings.insert(m_strings.begin() + index, Owned(new CStringImpl(text)));
        return true;
    });
}

bool CStringsImpl::Remove(int index) {
    return AtBoundary(lineRemove, sourceName, [&] {
        RequireIndex(index, GetCount(), lineRemove);
        m_strings.erase(m_strings.begin() + index);
        return true;
    });
}

int CStringsImpl::Find(IString* string) {
    return AtBoundary(lineFind, sourceName, -1, [&] {
        RequirePointer(string, lineFind, sourceName);
        return RequireFound(
            m_strings, [&](const Owned& own) { return own.get() == string; }, lineFind);
    });
}

int CStringsImpl::FindString(const char* text) {
    return AtBoundary(lineFindString, sourceName, -1, [&] {
        RequirePointer(text, lineFindString, sourceName);
        const std::string wanted = text;
        return RequireFound(
            m_strings, [&](const Owned& own) { return own->GetStr() == wanted; }, lineFindString);
    });
}

IString* CStringsImpl::GetString(int index) {
    return AtBoundary(lineGetString, sourceName, [&] {
        RequireIndex(index, GetCount(), lineGetString);
        return m_strings[static_cast<std::size_t>(index)].get();
    });
}

}  // namespace TarvoBased
