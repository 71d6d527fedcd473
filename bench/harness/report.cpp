#include "bench/harness/report.h"

#include <algorithm>
#include <cstdio>

#include "bench/harness/measure.h"

namespace Bench {
namespace {

constexpr char layouts[][8] = {"packed", "planar"};

}  // namespace

bool TableReporter::ReportContext(const Context&) {
    std::printf("x: time of the call / time of an in-place pass over a frame of the same format; medians\n");
    std::printf("%-40s %8s %8s %8s %8s %8s %9s %6s\n", "", "ms", "ns/pixel", "cold x", "hot x", "first x", "/ copy",
                "goal x");
    return true;
}

void TableReporter::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        const std::string name = run.run_name.function_name;
        const std::string row = name.substr(0, name.rfind('/'));
        if (run.error_occurred) {
            std::printf("%-40s %s\n", name.c_str(), run.error_message.c_str());
            continue;
        }
        const auto value = [&](const char* counter) { return double(run.counters.at(counter)); };
        std::printf("%-40s %8.3f %8.3f %8.2f %8.2f %8.2f %9.2f", name.c_str(),
                    value(counterNsPixel) * frameWidth * frameHeight * 1e-6, value(counterNsPixel), value(counterCold),
                    value(counterHot), value(counterFirst), value(counterCopies));
        if (value(counterGoal) > 0) std::printf(" %6.2f", value(counterGoal));
        std::printf("\n");
        m_counters[name] = run.counters;
        if (std::find(m_rows.begin(), m_rows.end(), row) == m_rows.end()) m_rows.push_back(row);
    }
    std::fflush(stdout);
}

void TableReporter::Finalize() {
    std::printf("\n| | packed cold | hot | goal | planar cold | hot | goal |\n|---|---|---|---|---|---|---|\n");
    for (const std::string& row : m_rows) {
        std::printf("| %s |", row.c_str());
        for (const char* layout : layouts) {
            const auto found = m_counters.find(row + "/" + layout);
            for (const char* counter : {counterCold, counterHot, counterGoal}) {
                const double value = found == m_counters.end() ? 0 : double(found->second.at(counter));
                value > 0 ? std::printf(" %.2f |", value) : std::printf(" |");
            }
        }
        std::printf("\n");
    }
}

int RunAll(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}

}  // namespace Bench
