// Prints a hash of what every effect and generator makes of pseudo-random frames and settings: the same ones on every
// machine. Usage: module_hashes [EXPECTED [THREADS]]; with a file of such lines it prints what differs from them, and
// fails then. Each thread makes them all, with objects of its own.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <thread>

#include "TarvoBased/IStrings.h"
#include "TarvoBased/ITarvoException.h"
#include "avbase/ImagePostion.h"
#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "avbase/avbase_srcutils/pixel_formats.h"
#include "dvd_effects/generator_table.h"
#include "effects/ImageEffects.h"
#include "tests/support/fake_manager.h"

namespace AVBased::Testing {
namespace {

struct FreeObject {
    template <class Object>
    void operator()(Object* object) const {
        object->Free();
    }
};
using Effect = std::unique_ptr<IVideoProc, FreeObject>;

class Hash {
 public:
    void Add(CRawVideoFrame& frame) {
        for (unsigned p = 0; p < frame.GetBufferCount(); ++p) {
            unsigned rowBytes = 0, pitch = 0, rows = 0;
            const unsigned char* const data = frame.GetBuffer(p, &rowBytes, &pitch, &rows);
            for (std::size_t y = 0; y < rows; ++y)
                for (unsigned x = 0; x < rowBytes; ++x) m_value = (m_value ^ data[y * pitch + x]) * 1099511628211U;
        }
    }
    std::string Text() const {
        char text[17];
        std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(m_value));
        return text;
    }

 private:
    std::uint64_t m_value = 14695981039346656037U;
};

void Randomise(CRawVideoFrame& frame, std::mt19937& random) {
    for (unsigned p = 0; p < frame.GetBufferCount(); ++p) {
        unsigned rowBytes = 0, pitch = 0, rows = 0;
        unsigned char* const data = frame.GetBuffer(p, &rowBytes, &pitch, &rows);
        for (std::size_t i = 0; i < std::size_t(pitch) * rows; ++i) data[i] = static_cast<unsigned char>(random());
    }
}

// Small and large, whole and broken, below 0 and above the picture's size.
std::string RandomValue(const std::string& name, unsigned width, unsigned height, std::mt19937& random) {
    const auto between = [&](int least, int most) { return least + int(random() % unsigned(most - least + 1)); };
    if (name.ends_with("_x")) return std::to_string(between(-9, int(width) + 9));
    if (name.ends_with("_y")) return std::to_string(between(-9, int(height) + 9));
    if (name.find("count") != std::string::npos) return std::to_string(between(0, 3));
    switch (random() % 4) {
        case 0:
            return std::to_string(between(-2, 9));
        case 1:
            return std::to_string(between(-40, 150));
        case 2:
            return std::to_string(between(0, int(width)));
        default:
            return std::to_string(between(-300, 700)) + "e-2";
    }
}

void SetAtRandom(IVideoProc& effect, unsigned width, unsigned height, std::mt19937& random) {
    const std::unique_ptr<TarvoBased::IStrings, FreeObject> names(effect.GetPropertyNames());
    for (int i = 0; names && i < names->GetCount(); ++i) {
        const char* const name = names->GetString(i)->GetStr();
        if (random() % 3 > 0) effect.SetProperty(name, RandomValue(name, width, height, random).c_str());
        TarvoBased::ReleaseTarvoException();
    }
}

std::string EffectHash(const char* name) {
    std::vector<unsigned> codes;
    for (const FormatInfo& info : formats)
        if (info.forEffects) codes.push_back(info.code);
    Hash hash;
    for (unsigned round = 0; round < 24; ++round) {
        std::mt19937 random(round);
        const unsigned most = round % 6 ? 60 : 300, width = 1 + random() % most, height = 1 + random() % most;
        const Effect effect(CreateEffect(nullptr, name));
        // The second frame meets the tables that the first one left, the third one new settings.
        for (int i = 0; i < 3; ++i) {
            if (i != 1) SetAtRandom(*effect, width, height, random);
            CRawVideoFrame frame(false, codes[round % codes.size()], width, height, true);
            Randomise(frame, random);
            ImagePostion record{};
            effect->ProcFrameInPlace(&record, i, &frame);
            hash.Add(frame);
        }
    }
    return hash.Text();
}

std::string GeneratorHash(const char* name) {
    FakeManager manager;
    manager.setsType = true;
    for (unsigned i = 0; i < 5; ++i) {
        FakeFile file = FakeManager::Plain(20 + i * 37, 150 - i * 30, 0);
        file.draw = [i](CRawVideoFrame& frame, unsigned index) {
            std::mt19937 random(i * 100 + index);
            Randomise(frame, random);
        };
        manager.files[std::to_string(i)] = file;
    }
    Hash hash;
    for (const unsigned code : {formatRgba32, 7U, 35U}) {
        const Effect menu(CreateEffect(&manager, name, GeneratorTable()));
        const auto set = [&](const char* property, const char* value) {
            menu->SetProperty(property, value);
            TarvoBased::ReleaseTarvoException();
        };
        set("duration", "60");
        set("additionSourceNumber", "5");
        set("isAdditionSourceImages", "true;true;true;true;true");
        set("additionSourcePaths", "0;1;2;3;4");
        set("textNumber", "2");
        set("textInfos", "A few words;F;;9;1;2;3;4;5;0;0;false\\More;F;;9;1;2;3;-9;30;6;2;false");
        for (int i = 0; i < 30; ++i) {
            CRawVideoFrame frame(false, code, 192, 108, true);
            ImagePostion record{};
            menu->ProcFrameInPlace(&record, i, &frame);
            if (i % 7 == 0) hash.Add(frame);
        }
        TarvoBased::ReleaseTarvoException();
    }
    return hash.Text();
}

// Those of both tables, one a line.
std::vector<std::string> Lines() {
    std::vector<std::string> lines;
    for (const EffectEntry& entry : EffectTable()) lines.push_back(entry.name + (' ' + EffectHash(entry.name)));
    for (const EffectEntry& entry : GeneratorTable()) lines.push_back(entry.name + (' ' + GeneratorHash(entry.name)));
    return lines;
}

// Those of each thread, one after another.
std::vector<std::string> LinesOf(std::size_t threads) {
    std::vector<std::vector<std::string>> lines(threads);
    std::vector<std::thread> running;
    for (std::vector<std::string>& own : lines) running.emplace_back([&own] { own = Lines(); });
    for (std::thread& thread : running) thread.join();
    std::vector<std::string> all;
    for (const std::vector<std::string>& own : lines) all.insert(all.end(), own.begin(), own.end());
    return all;
}

int Run(const char* expected, std::size_t threads) {
    std::ifstream file(expected ? expected : "");
    if (expected && !file) {
        std::fprintf(stderr, "module_hashes: %s cannot be read\n", expected);
        return 2;
    }
    std::vector<std::string> wanted;
    for (std::string line; std::getline(file, line);) wanted.push_back(line);
    const std::vector<std::string> lines = LinesOf(threads);
    int differences = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string& line = lines[i];
        if (lines.size() == threads * wanted.size() && line == wanted[i % wanted.size()]) continue;
        std::puts(line.c_str());
        ++differences;
    }
    if (!expected || differences == 0) return 0;
    std::fprintf(stderr, "%d differ from %s; where they are meant to, write that file again with module_hashes\n",
                 differences, expected);
    return 1;
}

}  // namespace
}  // namespace AVBased::Testing

int main(int argc, char** argv) {
    return AVBased::Testing::Run(argc > 1 ? argv[1] : nullptr, argc > 2 ? std::size_t(std::atoi(argv[2])) : 1);
}
