#include "host/run/plan.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/nearest_names.h"
#include "host/base/shell_word.h"

namespace Nifikral {
namespace {

using Words = CommandPlan::Words;
using Plan = CommandPlan;

std::string Shell(const Words& words) {
    std::string line;
    for (const std::string& word : words) {
        if (!line.empty()) line += ' ';
        line += ShellWord(word);
    }
    return line;
}

std::string AsShell(const Plan& plan) {
    std::string text;
    for (const Words& maker : plan.makers) text += Shell(maker) + "\n";
    return plan.last.empty() ? text : text + Shell(plan.last) + "\n";
}

// Names of files would not do as targets, since make splits them at blanks; each command looks for itself whether it
// has been done already.
std::string AsMakefile(const Plan& plan) {
    const auto recipe = [](const Words& words) {
        std::string line;
        for (const char c : Shell(words)) {
            if (c == '\n')
                throw HostError(ExitCode::Usage, "a makefile holds no word with a line feed; choose --format shell");
            if (c == '$') line += c;
            line += c;
        }
        return line;
    };
    std::ostringstream text;
    std::string targets;
    for (std::size_t i = 0; i < plan.makers.size(); ++i) targets += " part-" + std::to_string(i);
    text << "all:" << targets << "\n";
    if (!plan.last.empty()) text << '\t' << recipe(plan.last) << '\n';
    for (std::size_t i = 0; i < plan.makers.size(); ++i)
        text << "part-" << i << ":\n\t" << recipe(plan.makers[i]) << '\n';
    text << ".PHONY: all" << targets << "\n";
    return text.str();
}

// An array of jobs, and one that waits for all of them.
std::string AsSlurm(const Plan& plan) {
    constexpr char end[] = "END_OF_NIFIKRAL_JOB";
    std::ostringstream text;
    text << "#!/bin/sh\nset -e\nparts=$(sbatch --parsable --job-name=nifikral --array=0-" << plan.makers.size() - 1
         << " <<'" << end << "'\n#!/bin/sh\ncase $SLURM_ARRAY_TASK_ID in\n";
    for (std::size_t i = 0; i < plan.makers.size(); ++i) text << i << ") " << Shell(plan.makers[i]) << " ;;\n";
    text << "esac\n" << end << "\n)\n";
    if (!plan.last.empty())
        text << "sbatch --job-name=nifikral-last --dependency=afterok:\"${parts%%;*}\" <<'" << end << "'\n#!/bin/sh\n"
             << Shell(plan.last) << "\n"
             << end << "\n";
    return text.str();
}

std::string AsJson(const Plan& plan) {
    nlohmann::ordered_json json;
    json["output"] = plan.output;
    const bool inChunks = !plan.chunks.empty();
    nlohmann::ordered_json& makers = json[inChunks ? "chunks" : "stages"] = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < plan.makers.size(); ++i) {
        nlohmann::ordered_json& maker = makers.emplace_back(nlohmann::ordered_json::object());
        if (inChunks) maker = {{"first", plan.chunks[i].first}, {"last", plan.chunks[i].last}};
        maker["command"] = plan.makers[i];
    }
    json[inChunks ? "join" : "last"] = plan.last.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(plan.last);
    try {
        return json.dump(2) + "\n";
    } catch (const nlohmann::json::exception&) {
        throw HostError(ExitCode::Usage, "JSON holds no name that is not UTF-8; choose --format shell");
    }
}

struct Form {
    const char* name;
    std::string (*print)(const Plan& plan);
};
constexpr Form forms[] = {{"shell", AsShell}, {"make", AsMakefile}, {"slurm", AsSlurm}, {"json", AsJson}};

}  // namespace

std::vector<std::string> PlanFormats() {
    std::vector<std::string> names;
    for (const Form& form : forms) names.emplace_back(form.name);
    return names;
}

std::vector<FrameRange> ChunksOf(const FrameRange& frames, long long chunks) {
    const long long count = frames.Count();
    chunks = std::min(chunks, count);
    std::vector<FrameRange> shares;
    for (long long i = 0; i < chunks; ++i)
        shares.push_back({frames.first + count * i / chunks, frames.first + count * (i + 1) / chunks - 1});
    return shares;
}

CommandPlan PlanChunks(long long chunks, const Words& words, const OutputOptions& output, const FrameRange& frames) {
    if (output.path == "-" || (IsPictureOutput(output) && !IsNumberedOutput(output)))
        throw HostError(ExitCode::Usage, (output.path == "-" ? "stdout" : output.path) +
                                             " cannot be made in chunks; name a video, or pictures as out_%06d.png");
    CommandPlan plan{output.path, {}, {}, ChunksOf(frames, chunks)};
    for (const FrameRange& chunk : plan.chunks) {
        Words maker = {words.front(), "--chunk", RangeText(chunk), "--skip-existing"};
        maker.insert(maker.end(), words.begin() + 1, words.end());
        plan.makers.push_back(std::move(maker));
    }
    if (!IsPictureOutput(output)) {
        plan.last = {"concat", "--last", std::to_string(frames.last)};
        plan.last.insert(plan.last.end(), words.begin(), words.end());
        // So that the whole plan can be run again. What is to be overwritten is never taken for complete.
        if (!output.overwrite) plan.last.insert(plan.last.begin() + 4, "--skip-existing");
    }
    return plan;
}

std::string PlanText(CommandPlan plan, const std::string& program, const std::string& format) {
    for (Words& maker : plan.makers) maker.insert(maker.begin(), program);
    if (!plan.last.empty()) plan.last.insert(plan.last.begin(), program);
    for (const auto& [name, print] : forms)
        if (format == name) return print(plan);
    throw HostError(ExitCode::Usage, "--format " + format + " is none" + DidYouMean(format, PlanFormats()) +
                                         "; see nifikral plan --help");
}

}  // namespace Nifikral
