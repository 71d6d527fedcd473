#pragma once

namespace TarvoBased {

/// A growable byte string. Errors are filed as in IAVProc: 10021003 for a null pointer, 10021015 when memory runs out.
class IString {
 public:
    /// The bytes with a terminating zero; borrowed, valid until the string changes.
    virtual const char* GetStr() = 0;
    virtual bool SetStr(const char* text) = 0;
    /// The length in bytes, without the terminating zero.
    virtual unsigned GetStrLength() = 0;
    virtual unsigned GetDataSize() = 0;
    virtual const void* GetData() = 0;
    /// Raw bytes, zeros included; `size` in bytes. Null data is accepted with size 0.
    virtual bool SetData(const void* data, unsigned size) = 0;
    virtual bool Concat(const char* text) = 0;
    virtual bool Append(const void* data, unsigned size) = 0;
    virtual void Clear() = 0;
    virtual bool isEmpty() = 0;
    virtual void Free() = 0;
    virtual ~IString() = default;
};

/// An ordered list that owns its strings. Errors as in IString, and 10021000 for an index outside the list, 10021002
/// for a string object that is in the list already, 10021005 for a text or object that no element holds.
class IStrings {
 public:
    /// Releases the list and every string in it.
    virtual void Free() = 0;
    virtual int GetCount() = 0;
    /// Takes ownership of `string` on success only.
    virtual bool Add(IString* string) = 0;
    virtual bool AddString(const char* text) = 0;
    /// Inserts before `index` (0 to the count); ownership as in Add.
    virtual bool Insert(int index, IString* string) = 0;
    virtual bool InsertString(int index, const char* text) = 0;
    virtual bool Remove(int index) = 0;
    /// The element's index, -1 on failure.
    virtual int Find(IString* string) = 0;
    virtual int FindString(const char* text) = 0;
    /// Borrowed; null on failure.
    virtual IString* GetString(int index) = 0;
    virtual void Clear() = 0;
    virtual ~IStrings() = default;
};

}  // namespace TarvoBased
