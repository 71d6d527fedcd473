#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace Bench {

/// Prints a line for each benchmark as it ends. Benchmarks are called "<row>/packed" and "<row>/planar"; at the end the
/// two stand side by side in one table.
class TableReporter : public benchmark::BenchmarkReporter {
 public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

 private:
    std::vector<std::string> m_rows;
    std::map<std::string, benchmark::UserCounters> m_counters;
};

/// Runs the registered benchmarks that the command line asks for; the program's exit code.
int RunAll(int argc, char** argv);

}  // namespace Bench
