#pragma once

/// Every code that the host can read, and every fixed text. The texts are the system's own, misspellings included:
/// hosts compare them.
namespace TarvoBased {

enum ErrorCode : int {
    noError = 0,
    errorBadIndex = 10021000,
    errorDuplicated = 10021002,
    errorBadPointer = 10021003,
    errorNotFound = 10021005,
    errorNoMemory = 10021007,
    errorGeneral = 10021008,
    errorNoInterface = 10021009,
    errorBadFormat = 10021010,
    errorSystemCall = 10021013,
    errorStandardException = 10021015,
    errorEndOfFile = 10021016,
    errorProcessState = 10021019,
};

inline constexpr char textBadIndex[] = "Bad index";
inline constexpr char textDuplicated[] = "Resource duplicated";
inline constexpr char textBadPointer[] = "Bad pointer";
inline constexpr char textEffectNotFound[] = "Effect with the name does not exist";
inline constexpr char textPropertyNotFoundHead[] = "Property with name(";
inline constexpr char textPropertyNotFoundTail[] = ") does not exist";
inline constexpr char textResourceNotFound[] = "The request resource does not exist";
inline constexpr char textNoMemory[] = "No enough memory";
inline constexpr char textUnknownException[] = "Unknown exception";
inline constexpr char textInvalidParamValue[] = "Invalid Param Value";
inline constexpr char textInvalidPramaValue[] = "Invalid Prama Value";
inline constexpr char textNullPointer[] = "Null Pointer";
inline constexpr char textNullBackgroundSource[] = "Null Background Source";
inline constexpr char textUnexpectedError[] = "Unexpected error";
inline constexpr char textMallocFailed[] = "Malloc Failed";
inline constexpr char textCreatePointerFailed[] = "Create Pointer Failed";
inline constexpr char textParamError[] = "Param Error";
inline constexpr char textNoTextFrameBuffer[] = "Get Text Frame Buffer Failed";
inline constexpr char textConverterFrameFailed[] = "Converter Frame Failed";
inline constexpr char textCreateConverterFailed[] = "Create Image Converter Failed";
inline constexpr char textCloneFrameFailed[] = "Clone Frame Failed";
inline constexpr char textBadPixelFormat[] = "Bad pixel format";

}  // namespace TarvoBased
