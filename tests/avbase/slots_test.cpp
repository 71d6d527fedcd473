// Hosts are compiled against these slot numbers; a reordered declaration would call the wrong operation.

#include <gtest/gtest.h>

#include <cstring>

#include "TarvoBased/IStrings.h"
#include "TarvoBased/ITarvoException.h"
#include "avbase/IVideoProc.h"
#include "effects/base/CBasedVideoEffect.h"

namespace AVBased {
namespace {

#if defined(__x86_64__)
// In the Itanium binary interface a pointer to a virtual member function is one more than its offset in the table.
template <class Member>
std::ptrdiff_t Slot(Member member) {
    std::ptrdiff_t words[2];
    static_assert(sizeof member == sizeof words);
    std::memcpy(words, &member, sizeof words);
    EXPECT_EQ(words[0] % 2, 1) << "not virtual";
    return words[0] / std::ptrdiff_t(sizeof(void*));
}

template <class... Members>
void ExpectSlots(std::ptrdiff_t first, Members... members) {
    for (std::ptrdiff_t slot : {Slot(members)...}) EXPECT_EQ(slot, first++);
}

TEST(Slots, OfObjects) {
    ExpectSlots(0, &IAVProc::GetInterface, &IAVProc::Free, &IAVProc::GetType, &IAVProc::GetSubType, &IAVProc::GetName,
                &IAVProc::SetProperty, &IAVProc::GetProperty, &IAVProc::GetPropertyNames);
    ExpectSlots(8, &IVideoProc::Seek, &IVideoProc::GetDuration, &IVideoProc::ProcFrame, &IVideoProc::ProcFrameInPlace,
                &IVideoProc::BlendFrame);
    // The destructor pair follows the eight.
    using Effect = CBasedVideoImageEffect;
    ExpectSlots(10, &Effect::OnSetProperty, &Effect::Seek, &Effect::GetDuration, &Effect::ProcFrame,
                &Effect::ProcFrameInPlace, &Effect::BlendFrame, &Effect::InnerProcFrame);
}

TEST(Slots, OfFrames) {
    using Frame = IRawVideoFrame;
    ExpectSlots(0, &Frame::GetPixelFormat, &Frame::GetDimension, &Frame::GetTimeStamp, &Frame::SetTimeStamp,
                &Frame::IsTopDown, &Frame::IsPacked, &Frame::GetBufferCount, &Frame::GetTotalSize, &Frame::GetBuffer,
                &Frame::GetDAR, &Frame::CropRightAndBottom, &Frame::Free, &Frame::GetDuration, &Frame::SetDuration,
                &Frame::GetDuplicatedCount, &Frame::SetDuplicatedCount, &Frame::Clone, &Frame::CanBeModified,
                &Frame::SetCanBeModified, &Frame::IsInterlaced, &Frame::SetInterlaced, &Frame::IsTopFieldFirst,
                &Frame::SetTopFieldFirst, &Frame::SetBorderData, &Frame::GetBorderData);
}

TEST(Slots, OfErrorsAndStrings) {
    using Exception = TarvoBased::ITarvoException;
    ExpectSlots(0, &Exception::GetExceptionCode, &Exception::GetExceptionMsg, &Exception::GetExceptionSource,
                &Exception::SetException, &Exception::Clear, &Exception::Copy);
    using String = TarvoBased::IString;
    ExpectSlots(0, &String::GetStr, &String::SetStr, &String::GetStrLength, &String::GetDataSize, &String::GetData,
                &String::SetData, &String::Concat, &String::Append, &String::Clear, &String::isEmpty, &String::Free);
    using Strings = TarvoBased::IStrings;
    ExpectSlots(0, &Strings::Free, &Strings::GetCount, &Strings::Add, &Strings::AddString, &Strings::Insert,
                &Strings::InsertString, &Strings::Remove, &Strings::Find, &Strings::FindString, &Strings::GetString,
                &Strings::Clear);
}
#endif

}  // namespace
}  // namespace AVBased
