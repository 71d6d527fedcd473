#pragma once

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

#include "TarvoBased/ITarvoException.h"
#include "avbase/IAVManager.h"
#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "effects/base/frame_views.h"

namespace AVBased::Testing {

/// A picture or video of one colour, or of a few frames.
struct FakeFile {
    unsigned format = formatRgba32, width = 0, height = 0;
    std::function<void(CRawVideoFrame& frame, unsigned index)> draw = [](CRawVideoFrame&, unsigned) {};
    bool isStill = true;
    unsigned frames = ~0u;  ///< after so many, none comes any more
};

/// A host whose files are made in memory. Each of its calls can be made to return null, or to throw; it counts what it
/// has given out.
class FakeManager final : public IAVManager, public IAVImporter {
 public:
    enum class Fault { Null, NullWithError, Throw };

    std::map<std::string, FakeFile> files;
    int openSources = 0, framesRead = 0, lengthsSet = 0;
    std::string lastHtml, lastImporter;
    /// The size of every text.
    unsigned textWidth = 8, textHeight = 4;
    /// Texts are as wide as the font's size for each character and as high for each line, and break at blanks.
    bool setsType = false;

    /// From now on the call with this number (0 is the next one) and all later ones fail.
    void FailFrom(int call, Fault fault) {
        m_callsLeft = call;
        m_fault = fault;
    }
    /// Whether a call has failed on purpose.
    bool HasFailed() const { return m_hasFailed; }

    IAVImporter* GetImporter(const char* name) override {
        return Fails() || std::strcmp(name, importerSimpleHtmlText) != 0 ? nullptr : this;
    }
    IAVSource* OpenSource(const char* path, const char* importer) override {
        lastImporter = importer;
        const auto found = files.find(path);
        if (Fails()) return nullptr;
        if (found == files.end()) {
            TarvoBased::GetTarvoException()->SetException(10021013, path, 1, "fake");
            return nullptr;
        }
        return new Source(*this, found->second);
    }
    IAVSource* CreateSource() override {
        FakeFile text;
        text.width = textWidth;
        text.height = textHeight;
        text.draw = [](CRawVideoFrame& frame, unsigned) { Paint(frame, 0xFF0000FF); };
        return Fails() ? nullptr : new Source(*this, text);
    }

    /// Fills a frame of format 30.
    static void Paint(CRawVideoFrame& frame, std::uint32_t word) {
        const PackedView view = ViewPacked(frame);
        for (unsigned y = 0; y < view.height; ++y)
            for (unsigned x = 0; x < view.width; ++x) StoreWord(view.Row(y) + x, word);
    }
    /// A file of format 30 in one colour.
    static FakeFile Plain(unsigned width, unsigned height, std::uint32_t word) {
        FakeFile file;
        file.width = width;
        file.height = height;
        file.draw = [word](CRawVideoFrame& frame, unsigned) { Paint(frame, word); };
        return file;
    }

 private:
    class Source final : public IAVSource, public ISimpleHTMLRender, public ITextLines, public IAVSourcePropertySet {
     public:
        Source(FakeManager& manager, const FakeFile& file) : m_manager(manager), m_file(file) { ++manager.openSources; }
        virtual ~Source() { --m_manager.openSources; }

        void* GetInterface(const char* name) override {
            if (m_manager.Fails()) return nullptr;
            if (std::strcmp(name, ISimpleHTMLRender::name) == 0) return static_cast<ISimpleHTMLRender*>(this);
            if (m_manager.setsType && std::strcmp(name, ITextLines::name) == 0) return static_cast<ITextLines*>(this);
            if (std::strcmp(name, IAVSourcePropertySet::name) == 0) return static_cast<IAVSourcePropertySet*>(this);
            return nullptr;
        }
        IRawVideoFrame* ReadFrame() override {
            if (m_manager.Fails() || m_index >= m_file.frames) return nullptr;
            auto frame = std::make_unique<CRawVideoFrame>(false, m_file.format, m_file.width, m_file.height, true);
            m_file.draw(*frame, m_index++);
            ++m_manager.framesRead;
            return frame.release();
        }
        bool IsStill() override { return !m_manager.Fails() && m_file.isStill; }
        void Free() override { delete this; }
        bool SetHTML(const char* html) override {
            if (m_manager.Fails()) return false;
            m_manager.lastHtml = html;
            if (m_manager.setsType) SetType(html);
            return true;
        }
        const char* BreakLines(unsigned width, bool withinWords) override {
            if (m_manager.Fails()) return nullptr;
            const std::size_t most = std::max(width / m_size, 1u);
            m_lines.clear();
            std::size_t line = 0, blank = std::string::npos;
            for (const char c : m_text) {
                m_lines += c;
                if (c == ' ') blank = m_lines.size() - 1;
                if (c == '\n') line = m_lines.size();
                if (m_lines.size() <= line + most) continue;
                if (blank != std::string::npos && blank >= line) {
                    m_lines[blank] = '\n';
                    line = blank + 1;
                } else if (withinWords) {
                    m_lines.back() = '\n';
                    line = m_lines.size();
                    m_lines += c;
                }
            }
            return m_lines.c_str();
        }
        bool SetProperty(int identifier, int value) override {
            m_manager.lengthsSet += identifier == 2 && value == 5000;
            return !m_manager.Fails();
        }

     private:
        void SetType(const std::string& html) {
            const std::size_t begin = html.find('>') + 1;
            m_text = html.substr(begin, html.rfind('<') - begin);
            m_size = unsigned(std::stoul(html.substr(html.find("size='") + 6)));
            std::size_t widest = 0, line = 0;
            m_file.height = m_size;
            for (const char c : m_text) {
                line = c == '\n' ? 0 : line + 1;
                if (c == '\n') m_file.height += m_size;
                widest = std::max(widest, line);
            }
            m_file.width = unsigned(widest) * m_size;
        }

        FakeManager& m_manager;
        FakeFile m_file;
        unsigned m_index = 0, m_size = 1;
        std::string m_text, m_lines;
    };

    bool Fails() {
        if (m_callsLeft < 0 || m_callsLeft-- > 0) return false;
        m_callsLeft = 0;
        m_hasFailed = true;
        if (m_fault == Fault::Throw) throw std::runtime_error("a host call threw");
        if (m_fault == Fault::NullWithError)
            TarvoBased::GetTarvoException()->SetException(10021013, "a host call failed", 1, "fake");
        return true;
    }

    int m_callsLeft = -1;
    Fault m_fault = Fault::Null;
    bool m_hasFailed = false;
};

}  // namespace AVBased::Testing
