#include "host/command/common_options.h"

#include <algorithm>
#include <sstream>

#include "host/base/nearest_names.h"
#include "host/catalogue/catalogue.h"
#include "host/media/film_profile.h"

namespace Nifikral {

void Take(CommandLine& line, CLI::Option* option, const std::vector<std::string>& words, bool bearsOthers) {
    std::string text = option->get_description();
    for (const std::string& word : words)
        text += (&word == &words.front() ? ": " : &word == &words.back() ? " or " : ", ") + word;
    option->description(text);
    line.words[option] = words;
    if (words.empty() || bearsOthers) return;
    option->check([words](const std::string& value) {
        std::istringstream given(value);
        for (std::string word; given >> word;) {
            if (std::find(words.begin(), words.end(), word) != words.end()) continue;
            std::string line = "\"" + word + "\" is not one of ";
            for (const std::string& known : words) line.append(&known == &words.front() ? "" : ", ").append(known);
            return line + DidYouMean(word, words);
        }
        return std::string();
    });
}

std::vector<std::string> WordsOf(const char* effect, const char* parameter) {
    const std::span<const char* const> words = FindParameter(effect, parameter)->words;
    return {words.begin(), words.end()};
}

CLI::Range RangeOf(const char* effect, const char* parameter) {
    const ValueRange range = FindParameter(effect, parameter)->sensible;
    return {int(range.low), int(range.high)};
}

void AddCommonOptions(CLI::App& app, CommandLine& line) {
    app.add_option("--module", line.module, "the effect module to load (else $NIFIKRAL_MODULE, else the one installed)")
        ->type_name("FILE");
    app.add_option("--cpu-features", line.cpuFeatures,
                   "the feature word that the module reads: 0 plain routines, 1 or 4 vectorised ones");
}

void AddPresetsOption(CLI::App& app, std::string& file) {
    app.add_option("--presets", file, "presets of your own (default: $XDG_CONFIG_HOME/nifikral/presets)")
        ->type_name("FILE");
}

void AddRunOptions(CLI::App& app, CommandLine& line, RunOptions& options) {
    app.add_option("-f,--output-format", options.output.format, "the output's format, such as nut or y4m")
        ->type_name("FORMAT");
    app.add_option("--format", options.pixelFormat,
                   "the pixel format that the module sees: a code or FFmpeg's name (default: the nearest)")
        ->type_name("FORMAT");
    Take(line,
         app.add_option("--profile", options.profile,
                        "size, frame rate and shape of the pixels of a film (with pal or ntsc an .mpg or .vob is as "
                        "video DVDs want it)")
             ->type_name("PROFILE"),
         ProfileNames());
    app.add_option("--frames", options.frames, "only frames A-B, counted from 0, both included")->type_name("A-B");
    app.add_option("--chunk", options.chunk,
                   "only the run's frames A-B, without sound, to be joined by nifikral concat; see nifikral plan")
        ->type_name("A-B");
    app.add_flag("--skip-existing", options.skipExisting,
                 "leave an output that is complete as it is, and make one that is not anew");
    app.add_option("--threads", options.threads, "processor cores to use (default: all)")->check(CLI::Range(1, 1024));
    app.add_option("--encoder", options.output.encoder, "FFmpeg's encoder to use, such as ffv1")->type_name("ENCODER");
    app.add_option("--encoder-option", options.output.encoderOptions, "an option of the encoder")
        ->type_name("KEY=VALUE")
        ->allow_extra_args(false);
    app.add_option("--audio-encoder", options.output.audioEncoder,
                   "FFmpeg's encoder for the sound, such as libopus (default: the sound is copied where it can be)")
        ->type_name("ENCODER");
    app.add_option("--audio-bitrate", options.output.audioBitRate, "bits a second of the encoded sound, such as 192k")
        ->type_name("BITS")
        ->transform(CLI::AsNumberWithUnit(std::map<std::string, int>{{"k", 1000}, {"M", 1000000}}));
    app.add_flag("--no-sound{false}", options.output.sound, "leave the sound out");
    app.add_flag("-y,--overwrite", options.output.overwrite, "overwrite an existing output");
    app.add_flag("--dry-run", options.dryRun, "check everything and print what would be done");
    app.add_flag("--sandbox", options.confined,
                 "read only what the command line names (of a project or a list its folder) and write only into the "
                 "output's folder; the kernel sees to it");
    Take(line, app.add_option("--progress", line.progress, "how progress is printed on stderr")->type_name("FORM"),
         {"line", "json"});
    app.add_flag("-q,--quiet", line.quiet, "errors only");
    app.add_flag("-v,--verbose", line.verbose, "print details");
    AddCommonOptions(app, line);
    line.runs[&app] = &options;
}

void AddPreparation(CLI::App& app, Preparation& preparation) {
    app.add_option("--crop", preparation.crop,
                   "first of all, take a part of the pictures, in pixels or shares: 640x360+0+100, 50%x50%+25%+25%; "
                   "from the middle without +X+Y")
        ->type_name("WxH+X+Y");
    app.add_option("--scale", preparation.scale,
                   "then bring them to a size: 1280x720, 1280 (the height follows), x720 (the width follows) or 50%; "
                   "places in effects are of that size")
        ->type_name("WxH");
    app.add_option("--rate", preparation.rate,
                   "and to so many frames a second, such as 25 or 29.97, by repeating and leaving out; frames are "
                   "counted at that rate")
        ->type_name("NUMBER");
}

void AddOutputApart(CLI::App& app, RunOptions& options) {
    app.add_option("-o,--output", options.output.path,
                   "instead of OUT, for any number of inputs: a folder (graded/) that takes files of their names, or a "
                   "pattern, in which {name} is an input's name and {number} its place, as in graded/{name}.png")
        ->type_name("OUT");
}

std::vector<std::string> JoinWords(const std::string& first, const std::string& second,
                                   const std::vector<std::string>& more) {
    std::vector<std::string> words;
    for (const std::string& word : {first, second})
        if (!word.empty()) words.push_back(word);
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

void AddFilmOutput(CLI::App& app, FilmOptions& options) {
    app.add_option("-o,--output", options.run.output.path,
                   "a video, a picture, pictures as out_%06d.png, or - for stdout")
        ->type_name("FILE")
        ->required();
}

void AddFilmOptions(CLI::App& app, CommandLine& line, FilmOptions& options) {
    app.add_option("--audio", options.sounds, "a file whose sound goes with the film; several follow each other")
        ->type_name("FILE")
        ->allow_extra_args(false);
    app.add_option("--audio-fade", options.fade,
                   "seconds in which the sound fades out at the end, and one file into the next")
        ->capture_default_str()
        ->check(CLI::Range(0.0, 600.0));
    app.add_option("--length", options.length, "of the film in seconds, or audio for the length of the sound")
        ->type_name("SECONDS");
    AddRunOptions(app, line, options.run);
}

}  // namespace Nifikral
