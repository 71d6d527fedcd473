#pragma once

#include <memory>
#include <string>
#include <vector>

#include "TarvoBased/IStrings.h"

namespace TarvoBased {

class CStringImpl : public IString {
 public:
    CStringImpl() = default;
    explicit CStringImpl(const char* text) : m_text(text) {}

    const char* GetStr() override { return m_text.c_str(); }
    bool SetStr(const char* text) override;
    unsigned GetStrLength() override { return static_cast<unsigned>(m_text.size()); }
    unsigned GetDataSize() override { return static_cast<unsigned>(m_text.size()); }
    const void* GetData() override { return m_text.data(); }
    bool SetData(const void* data, unsigned size) override;
    bool Concat(const char* text) override;
    bool Append(const void* data, unsigned size) override;
    void Clear() override { m_text.clear(); }
    bool isEmpty() override { return m_text.empty(); }
    void Free() override { delete this; }

 private:
    std::string m_text;
};

class CStringsImpl : public IStrings {
 public:
    void Free() override { delete this; }
    int GetCount() override { return static_cast<int>(m_strings.size()); }
    bool Add(IString* string) override { return Insert(GetCount(), string); }
    bool AddString(const char* text) override { return InsertString(GetCount(), text); }
    bool Insert(int index, IString* string) override;
    bool InsertString(int index, const char* text) override;
    bool Remove(int index) override;
    int Find(IString* string) override;
    int FindString(const char* text) override;
    IString* GetString(int index) override;
    void Clear() override { m_strings.clear(); }

 private:
    struct Release {
        void operator()(IString* string) const { string->Free(); }
    };
    using Owned = std::unique_ptr<IString, Release>;

    std::vector<Owned> m_strings;
};

}  // namespace TarvoBased
