#include "host/studio/job_words.h"

#include <algorithm>

#include "host/base/number_text.h"
#include "host/base/shell_word.h"
#include "host/studio/effect_texts.h"
#include "host/studio/web_message.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

class JobReader {
 public:
    JobReader(const Json& job, const StudioFolder& folder, JobWords& words)
        : m_job(job), m_folder(folder), m_words(words) {}

    void Word(const std::string& word) { m_words.words.push_back(word); }
    // An option where the job has it. In one word, so that a value may begin with a hyphen.
    void Option(const char* key, const char* option) {
        if (const std::string value = TextIn(m_job, key); !value.empty())
            Word(std::string(option).append("=").append(value));
    }
    void Flag(const char* key, const char* option) {
        if (FlagIn(m_job, key)) Word(option);
    }
    void Words(const char* key, const char* option) {
        std::string list;
        for (const Json& word : ListIn(m_job, key)) {
            if (!word.is_string()) throw WebError(400, "\"" + std::string(key) + "\" is no list of words");
            list.append(list.empty() ? "" : ",").append(word.get<std::string>());
        }
        if (!list.empty()) Word(std::string(option).append("=").append(list));
    }
    std::string File(const char* key) { return m_folder.File(TextIn(m_job, key)); }
    void Sounds() {
        for (const Json& sound : ListIn(m_job, "audio"))
            Word("--audio=" + m_folder.Existing(sound.is_string() ? sound.get<std::string>() : ""));
    }
    void Output(const char* option) {
        if (*option) Word(option);
        Word(m_words.output);
    }

    void Apply(const std::function<SourceFacts(const std::string&)>& facts) {
        const std::string input = File("input");
        m_words.title = fs::path(input).filename();
        if (m_words.overwrite) Word("-y");
        const bool begins = MemberOf(m_job, "in"), ends = MemberOf(m_job, "out"), single = MemberOf(m_job, "at");
        if (begins || ends || single) {
            const SourceFacts film = facts(input);
            const auto time = [&](const char* key) {
                constexpr double longest = 24 * 3600;
                return NumberIn(m_job, key, 0, longest, 0);
            };
            const long long first = film.FrameAt(time(single ? "at" : "in"));
            std::string range = std::to_string(first);
            if (!single) range += "-";
            if (ends && !single) range += std::to_string(std::max(first, film.FramesBefore(time("out")) - 1));
            Word("--frames=" + range);
        }
        for (const char* const key : {"crop", "scale", "rate", "profile"}) {
            std::string option = "--";
            Option(key, option.append(key).c_str());
        }
        Word(input);
        Output("");
        for (const std::string& effect : EffectTexts(ListIn(m_job, "effects"), m_folder)) Word(effect);
    }

    void Menu() {
        m_words.title = TextIn(m_job, "project");
        Word(TextIn(m_job, "template"));
        Word(File("project"));
        Output("-o");
        if (m_words.overwrite) Word("-y");
        Option("page", "--page");
        Option("profile", "--profile");
        Flag("loopOnly", "--loop-only");
        Sounds();
    }

    void Title() {
        m_words.title = TextIn(m_job, "text");
        if (m_words.overwrite) Word("-y");
        for (const auto& [key, option] : {std::pair("face", "--face"),
                                          {"style", "--style"},
                                          {"colour", "--color"},
                                          {"size", "--size"},
                                          {"place", "--place"},
                                          {"inMotion", "--in"},
                                          {"outMotion", "--out"},
                                          {"inSeconds", "--in-seconds"},
                                          {"outSeconds", "--out-seconds"},
                                          {"begin", "--begin"},
                                          {"seconds", "--seconds"}})
            Option(key, option);
        Word("--");
        Word(m_words.title);
        Word(File("input"));
        Output("");
    }

    void Show() {
        m_words.title = "slideshow";
        Output("-o");
        if (m_words.overwrite) Word("-y");
        for (const auto& [key, option] : {std::pair("order", "--order"),
                                          {"seconds", "--seconds"},
                                          {"transitionSeconds", "--transition-seconds"},
                                          {"motionAmount", "--motion-amount"},
                                          {"fit", "--fit"},
                                          {"seed", "--seed"},
                                          {"size", "--size"},
                                          {"rate", "--rate"},
                                          {"profile", "--profile"},
                                          {"captions", "--captions"},
                                          {"fade", "--audio-fade"},
                                          {"length", "--length"}})
            Option(key, option);
        Words("transitions", "--transitions");
        Words("motions", "--motion");
        Sounds();
        Inputs();
    }

    void Disc() {
        m_words.title = TextIn(m_job, "project");
        Word(File("project"));
        Output("-o");
        if (m_words.overwrite) Word("-y");
        Option("format", "--format");
    }

 private:
    // By their names where they are few and nothing is said of them, else in a list beside the film.
    void Inputs() {
        const Json& inputs = ListIn(m_job, "inputs");
        constexpr std::size_t mostNames = 40;
        const bool plain = inputs.size() <= mostNames &&
                           std::all_of(inputs.begin(), inputs.end(), [](const Json& one) { return one.is_string(); });
        std::string list;
        const std::string usual = fs::path(TextIn(m_job, "output")).replace_extension(".txt");
        const std::string file = plain ? "" : m_folder.Writable(TextIn(m_job, "list", usual));
        const fs::path folder = fs::path(file).parent_path();
        for (const Json& input : inputs) {
            const std::string path =
                m_folder.Existing(input.is_string() ? input.get<std::string>() : TextIn(input, "path"));
            if (plain) {
                Word(path);
                continue;
            }
            std::string caption = input.is_object() ? TextIn(input, "caption") : "";
            std::replace(caption.begin(), caption.end(), '\n', ' ');
            if (path.find_first_of("|\n") != std::string::npos)
                throw WebError(400, path + ": a list cannot hold this name; rename the file");
            list += fs::path(path).lexically_proximate(folder.empty() ? "." : folder).string() + " | " +
                    (input.is_object() ? TextIn(input, "seconds") : "") + " | " + caption + "\n";
        }
        if (inputs.empty()) throw WebError(400, "the slideshow has no pictures; put some in");
        if (plain) return;
        if (fs::path(file).extension() != ".txt") throw WebError(400, "\"list\" is no name of a .txt");
        m_words.files.push_back({file, list});
        Word(std::string("@").append(file));
    }

    const Json& m_job;
    const StudioFolder& m_folder;
    JobWords& m_words;
};

}  // namespace

JobWords ReadJob(const Json& job, const StudioFolder& folder,
                 const std::function<SourceFacts(const std::string&)>& facts) {
    JobWords words;
    words.kind = TextIn(job, "kind");
    words.output = folder.Writable(TextIn(job, "output"));
    words.overwrite = FlagIn(job, "overwrite");
    words.words.push_back(words.kind);
    JobReader reader(job, folder, words);
    if (words.kind == "apply")
        reader.Apply(facts);
    else if (words.kind == "menu")
        reader.Menu();
    else if (words.kind == "slideshow")
        reader.Show();
    else if (words.kind == "title")
        reader.Title();
    else if (words.kind == "disc")
        reader.Disc();
    else
        throw WebError(400, "there is no job \"" + words.kind + "\"; give apply, menu, slideshow, title or disc");
    return words;
}

std::string CommandLineOf(const JobWords& job) {
    std::string line = "nifikral";
    for (const std::string& word : job.words) line.append(" ").append(ShellWord(word));
    return line;
}

}  // namespace Nifikral
