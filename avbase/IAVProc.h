#pragma once

namespace TarvoBased {
class IStrings;
}

namespace AVBased {

/// A named processing object with typed text properties and named interfaces.
///
/// Threads: one object is used by one thread at a time. Errors: every operation that can fail returns null or false and
/// files code, message, source and line in the calling thread's exception object (TarvoBased::GetTarvoException);
/// success leaves that object as it was.
class IAVProc {
 public:
    /// The interface registered under `name` ("IVideoProc" for every effect); borrowed, valid as long as the object.
    /// Errors: 10021003 for a null name; 10021009, with the name as its message, for an unknown one.
    virtual void* GetInterface(const char* name) = 0;
    /// Destroys the object with every frame, table and source it holds.
    virtual void Free() = 0;
    /// The main type: 1 for every video effect.
    virtual unsigned GetType() = 0;
    /// The kind within the type: 2 image effect, 1 motion, 4 sizing, 8 blender.
    virtual unsigned GetSubType() = 0;
    /// The object's own name; borrowed, valid as long as the object.
    virtual const char* GetName() = 0;
    /// Sets a property from text. Text that does not start with a number leaves a number property's value as it was and
    /// still returns true. A refused value returns false and changes nothing.
    /// Errors: 10021003 for a null argument; 10021005 for an unknown name; 10021008 for a refused value.
    virtual bool SetProperty(const char* name, const char* value) = 0;
    /// The property's present text; borrowed, valid until the same property is set again. Writes its type code to
    /// `type` unless that is null: 0 text, 1 real, 2 64-bit integer, 3 32-bit integer, 4 16-bit integer. Errors:
    /// 10021003 for a null name; 10021005 for an unknown one.
    virtual const char* GetProperty(const char* name, int* type) = 0;
    /// A new list of all property names in ascending byte order; the caller releases it with Free().
    virtual TarvoBased::IStrings* GetPropertyNames() = 0;

 protected:
    ~IAVProc() = default;
};

}  // namespace AVBased
