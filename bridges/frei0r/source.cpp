#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "avbase/IImageConverter.h"
#include "avbase/avbase_srcutils/pixel_formats.h"
#include "bridges/common/borrowed_frame.h"
#include "bridges/common/bridged_effect.h"
#include "bridges/frei0r/frame_clock.h"
#include "bridges/frei0r/plugin.h"
#include "bridges/frei0r/report.h"
#include "host/base/errors.h"
#include "host/catalogue/catalogue.h"
#include "host/films/media_manager.h"
#include "host/films/menu_project.h"

namespace Nifikral::Frei0r {
namespace {

using AVBased::formatRgba32;

constexpr unsigned bytesPerPixel = 4;

const EffectModule& Module() {
    static MediaManager manager;
    const BridgeModule& loaded = TheBridgeModule(&manager);
    if (!loaded.module) throw HostError(ExitCode::Failed, loaded.error);
    return *loaded.module;
}

struct FreeConverter {
    void operator()(AVBased::IImageConverter* converter) const { converter->Free(); }
};

// A packed picture without padding.
struct Picture {
    unsigned width, height;
    unsigned char* data;

    std::size_t Bytes() const { return std::size_t(width) * height * bytesPerPixel; }
    BorrowedPlane Plane() const { return {data, width * bytesPerPixel, width * bytesPerPixel, height}; }
};

// A menu that is made frame after frame: what one shows may follow from those before it.
class Menu {
 public:
    /// Throws HostError for a project that is not right.
    Menu(const std::string& templateName, const std::string& path) : m_templateName(templateName) {
        Faults faults(path);
        m_project = ReadMenuProject(path, templateName, nullptr, faults);
        faults.ThrowIfAny();
        m_picture.resize(Shown().Bytes());
        Restart();
    }

    double FramesPerSecond() const { return av_q2d(m_project.film.frameRate); }

    /// Makes the picture of a frame; past the end, that of the last one. Returns the first error.
    std::optional<std::string> Show(long long frame) {
        frame = std::min(frame, m_project.film.frames - 1);
        std::optional<std::string> error;
        if (frame < m_next - 1) error = Restart();
        for (; m_next <= frame; ++m_next) {
            const std::optional<std::string> own = MakeNext();
            if (!error) error = own;
        }
        return error;
    }

    /// Copies the picture, scaled where the sizes differ.
    std::optional<std::string> CopyTo(const Picture& output) {
        const Picture shown = Shown();
        if (shown.width == output.width && shown.height == output.height) {
            std::memcpy(output.data, shown.data, output.Bytes());
            return std::nullopt;
        }
        if (!m_scaler)
            m_scaler.reset(AVBased::CreateImageConverter(formatRgba32, shown.width, shown.height, formatRgba32,
                                                         output.width, output.height));
        const BorrowedPlane from = shown.Plane(), to = output.Plane();
        BorrowedFrame source(formatRgba32, shown.width, shown.height, {&from, 1});
        BorrowedFrame destination(formatRgba32, output.width, output.height, {&to, 1});
        if (m_scaler) m_scaler->Convert(&source, &destination);
        return TakeModuleError();
    }

 private:
    Picture Shown() { return {unsigned(m_project.film.width), unsigned(m_project.film.height), m_picture.data()}; }

    std::optional<std::string> Restart() {
        m_generator.emplace(Module(), m_templateName);
        m_next = 0;
        std::optional<std::string> error;
        for (const auto& [name, value] : MenuProperties(m_project)) {
            const std::optional<std::string> own = m_generator->Set(name, value);
            if (!error) error = own;
        }
        return error;
    }

    std::optional<std::string> MakeNext() {
        constexpr unsigned char black[bytesPerPixel] = {0, 0, 0, 255};
        for (std::size_t i = 0; i < m_picture.size(); ++i) m_picture[i] = black[i % bytesPerPixel];
        const Picture shown = Shown();
        const BorrowedPlane plane = shown.Plane();
        BorrowedFrame frame(formatRgba32, shown.width, shown.height, {&plane, 1}, int(m_next));
        return m_generator->Process(frame, int(m_next));
    }

    std::string m_templateName;
    MenuProject m_project;
    std::vector<unsigned char> m_picture;
    std::optional<BridgedEffect> m_generator;
    std::unique_ptr<AVBased::IImageConverter, FreeConverter> m_scaler;
    long long m_next = 0;
};

class SourceInstance final : public Instance {
 public:
    SourceInstance(const char* effect, unsigned width, unsigned height)
        : m_effect(effect), m_width(width), m_height(height) {}

    void Set(const void* value, int parameter) override {
        const std::lock_guard lock(m_mutex);
        const char* path = nullptr;
        if (parameter == 0) std::memcpy(&path, value, sizeof path);
        if (!path || path == m_project) return;
        m_project = path;
        m_menu.reset();
        m_reported = false;
        try {
            m_menu.emplace(m_effect, m_project);
        } catch (const std::exception& error) {
            Report(error.what());
        }
    }

    void Get(void* value, int parameter) override {
        const std::lock_guard lock(m_mutex);
        const char* const path = m_project.c_str();
        if (parameter == 0) std::memcpy(value, &path, sizeof path);
    }

    void Update(double time, const void*, void* output) override {
        const std::lock_guard lock(m_mutex);
        const Picture picture{m_width, m_height, static_cast<unsigned char*>(output)};
        std::memset(output, 0, picture.Bytes());
        if (!m_menu) return;
        std::optional<std::string> error;
        try {
            error = m_menu->Show(m_clock.FrameAt(time, m_menu->FramesPerSecond(), TimeUnit::Automatic));
            const std::optional<std::string> own = m_menu->CopyTo(picture);
            if (!error) error = own;
        } catch (const std::exception& failure) {
            error = failure.what();
        }
        if (error && !m_reported) Report(*error);
        m_reported = m_reported || error;
    }

 private:
    std::mutex m_mutex;
    std::string m_effect, m_project;
    unsigned m_width, m_height;
    std::optional<Menu> m_menu;
    FrameClock m_clock;
    bool m_reported = false;
};

const std::string& NameOf(const char* effect) {
    static std::mutex mutex;
    static std::map<std::string, std::string, std::less<>> names;
    const std::lock_guard lock(mutex);
    return names.try_emplace(effect, std::string("nifikral ") + effect).first->second;
}

}  // namespace

void Source::Describe(const char* effect, PluginInfo& info) {
    const EffectInfo* const row = FindEffect(effect);
    info = {
        NameOf(effect).c_str(), "Nifikral", sourcePlugin,           modelBgra, interfaceMajor, NIFIKRAL_VERSION_MAJOR,
        NIFIKRAL_VERSION_MINOR, 1,          row ? row->summary : ""};
}

void Source::DescribeParameter(const char*, int parameter, ParameterInfo& info) {
    if (parameter == 0) info = {"project", textParameter, "the project file, as nifikral menu takes it"};
}

Instance* Source::Construct(const char* effect, unsigned width, unsigned height) {
    return new SourceInstance(effect, width, height);
}

}  // namespace Nifikral::Frei0r
