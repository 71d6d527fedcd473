#pragma once

#include <cstdint>

#include "avbase/IVideoProc.h"
#include "avbase/avbase_srcutils/avbase_cbaseavproc.h"
#include "effects/base/frame_copy.h"
#include "effects/base/instruction_sets.h"

namespace AVBased {

/// A processing object that is a video effect: the interface "IVideoProc" and the property "duration".
class CBasedVideoEffect : public CBaseAVProc, public IVideoProc {
 public:
    CBasedVideoEffect(const char* name, unsigned subtype);

    // Asked through either base, these are the same.
    void* GetInterface(const char* name) override { return CBaseAVProc::GetInterface(name); }
    void Free() override { CBaseAVProc::Free(); }
    unsigned GetType() override { return CBaseAVProc::GetType(); }
    unsigned GetSubType() override { return CBaseAVProc::GetSubType(); }
    const char* GetName() override { return CBaseAVProc::GetName(); }
    bool SetProperty(const char* name, const char* value) override { return CBaseAVProc::SetProperty(name, value); }
    const char* GetProperty(const char* name, int* type) override { return CBaseAVProc::GetProperty(name, type); }
    TarvoBased::IStrings* GetPropertyNames() override { return CBaseAVProc::GetPropertyNames(); }
    void OnSetProperty(const std::string& name, PropertyNode& node) override;

    bool Seek(unsigned) override { return true; }
    int GetDuration() override { return m_base.duration; }
    IRawVideoFrame* ProcFrame(ImagePostion*, int, IRawVideoFrame*) override { return nullptr; }
    void ProcFrameInPlace(ImagePostion*, int, IRawVideoFrame*) override {}
    void BlendFrame(const ImagePostion*, int, IRawVideoFrame*, IRawVideoFrame*) override {}

    struct BaseSettings {
        std::int32_t duration = 1;
    };

 private:
    BaseSettings m_base;
};

/// The base of every effect of the table: its frame calls check, copy where asked to, and end in InnerProcFrame.
class CBasedVideoImageEffect : public CBasedVideoEffect {
 public:
    explicit CBasedVideoImageEffect(const char* name) : CBasedVideoEffect(name, 2) {}

    IRawVideoFrame* ProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;
    void ProcFrameInPlace(ImagePostion* record, int position, IRawVideoFrame* frame) override;
    /// Changes `frame` (never null) in place. A format that the effect does not know stays as it is.
    virtual void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame);

    /// Limits the routines to one usable instruction set, for tests and benchmarks; the best is chosen at construction.
    void UseInstructionSet(InstructionSet set) { m_instructionSet = set; }

 protected:
    /// For choosing variants.
    InstructionSet Instructions() const { return m_instructionSet; }

 private:
    InstructionSet m_instructionSet = BestInstructionSet();
    FrameOwner m_output;
};

/// For other plug-ins of the host: moves a picture, in place only.
class CBasedVideoMotionXYEffect : public CBasedVideoEffect {
 public:
    explicit CBasedVideoMotionXYEffect(const char* name) : CBasedVideoEffect(name, 1) {}
    void ProcFrameInPlace(ImagePostion* record, int position, IRawVideoFrame* frame) override;
    virtual void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) = 0;
};

/// For other plug-ins of the host: resizes a picture.
class CBasedVideoMotionSizingEffect : public CBasedVideoEffect {
 public:
    explicit CBasedVideoMotionSizingEffect(const char* name) : CBasedVideoEffect(name, 4) {}
};

/// For other plug-ins of the host: blends two pictures.
class CBasedVideoBlender : public CBasedVideoEffect {
 public:
    explicit CBasedVideoBlender(const char* name) : CBasedVideoEffect(name, 8) {}
};

}  // namespace AVBased
