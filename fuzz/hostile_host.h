#pragma once

#include <cstring>
#include <string>

#include "avbase/IAVManager.h"
#include "fuzz/hostile_frame.h"

namespace AVBased::Fuzzing {

/// A host whose calls may fail or throw, and whose files, texts and frames are whatever the data says.
class HostileHost final : public IAVManager, public IAVImporter {
 public:
    /// `data` decides, now and in later calls, and outlives the host.
    explicit HostileHost(FuzzedDataProvider& data)
        : m_data(data), m_isReliable(data.ConsumeIntegralInRange(0, 3) > 0) {}

    int OpenSources() const { return m_openSources; }

    IAVImporter* GetImporter(const char*) override { return Fails() ? nullptr : this; }
    IAVSource* OpenSource(const char*, const char*) override { return CreateSource(); }
    IAVSource* CreateSource() override { return Fails() ? nullptr : new Source(*this); }

 private:
    class Source final : public IAVSource, public ISimpleHTMLRender, public ITextLines, public IAVSourcePropertySet {
     public:
        explicit Source(HostileHost& host) : m_host(host), m_isStill(host.m_data.ConsumeBool()) {
            ++host.m_openSources;
        }
        virtual ~Source() { --m_host.m_openSources; }

        void* GetInterface(const char* name) override {
            if (m_host.Fails()) return nullptr;
            if (std::strcmp(name, ISimpleHTMLRender::name) == 0) return static_cast<ISimpleHTMLRender*>(this);
            if (std::strcmp(name, ITextLines::name) == 0) return static_cast<ITextLines*>(this);
            return static_cast<IAVSourcePropertySet*>(this);
        }
        IRawVideoFrame* ReadFrame() override { return m_host.Fails() ? nullptr : new HostileFrame(m_host.m_data); }
        bool IsStill() override { return m_isStill; }
        void Free() override { delete this; }
        bool SetHTML(const char* html) override {
            m_text = html;
            return !m_host.Fails();
        }
        const char* BreakLines(unsigned, bool) override {
            constexpr std::size_t longest = 40;
            if (m_host.Fails()) m_text = m_host.m_data.ConsumeRandomLengthString(longest);
            return m_host.Fails() ? nullptr : m_text.c_str();
        }
        bool SetProperty(int, int) override { return !m_host.Fails(); }

     private:
        HostileHost& m_host;
        bool m_isStill;
        std::string m_text;
    };

    bool Fails() {
        if (m_isReliable) return false;
        constexpr int failing = 6, throwing = 7;
        const int chosen = m_data.ConsumeIntegralInRange(0, throwing);
        if (chosen == throwing) throw std::runtime_error("a call of the host threw");
        return chosen == failing;
    }

    FuzzedDataProvider& m_data;
    bool m_isReliable;
    int m_openSources = 0;
};

}  // namespace AVBased::Fuzzing
