// The command nifikral: puts the module's effects on pictures and videos.

#include <CLI/CLI.hpp>
#include <cstdio>

#include "host/apply.h"
#include "host/errors.h"
#include "host/gallery.h"
#include "host/interruption.h"
#include "host/listing.h"
#include "host/log.h"

namespace {

using namespace Nifikral;

struct CommandLine {
    std::string module;
    unsigned cpuFeatures = 0;
    bool quiet = false, verbose = false, json = false;
    std::string effect;
    ApplyOptions apply;
    GalleryOptions gallery;
};

// Settings that every subcommand shares.
void AddCommonOptions(CLI::App& app, CommandLine& line) {
    app.add_option("--module", line.module,
                   "the effect module to load (else $NIFIKRAL_MODULE, else the one installed)");
    app.add_option("--cpu-features", line.cpuFeatures,
                   "the feature word that the module reads: 0 plain routines, 1 or 4 vectorised ones");
}

CLI::App* AddApply(CLI::App& app, CommandLine& line) {
    CLI::App* const apply = app.add_subcommand("apply", "put effects on a picture or a video");
    apply->footer(
        "Pictures are turned upright first, so that coordinates mean what the viewer sees. Exit codes: 0 done, 1 "
        "failed "
        "while running, 2 wrong usage, 3 input unreadable, 4 output not writable, 130 interrupted.");
    ApplyOptions& options = line.apply;
    apply->add_option("IN", options.input, "a picture, a video, pictures as in_%06d.png, or - for stdin")->required();
    apply
        ->add_option("OUT", options.output.path,
                     "by its extension a video (the sound is copied) or a picture; out_%06d.png for one a frame; - for "
                     "stdout")
        ->required();
    apply
        ->add_option("EFFECT", options.effects,
                     "EFFECT[:name=value]...; a value may change over time: A..B over the run, @frame:value,... at key "
                     "points")
        ->required();
    apply->add_option("-f,--output-format", options.output.format, "the output's format, such as nut or y4m");
    apply->add_option("--format", options.pixelFormat,
                      "the pixel format that effects see: a code or FFmpeg's name (default: nearest to the input's)");
    apply->add_option("--frames", options.frames, "only frames A-B, counted from 0, both included");
    apply->add_option("--threads", options.threads, "processor cores to use (default: all)")
        ->check(CLI::Range(1, 1024));
    apply->add_option("--encoder", options.output.encoder, "FFmpeg's encoder to use, such as ffv1");
    apply->add_option("--encoder-option", options.output.encoderOptions, "key=value for the encoder")
        ->allow_extra_args(false);
    apply->add_flag("-y,--overwrite", options.output.overwrite, "overwrite an existing output");
    apply->add_flag("--keep-going", options.keepGoing, "take what is readable of a damaged input");
    apply->add_flag("--dry-run", options.dryRun, "check everything and tell what would be done");
    apply->add_flag("-q,--quiet", line.quiet, "errors only");
    apply->add_flag("-v,--verbose", line.verbose, "tell details");
    AddCommonOptions(*apply, line);
    return apply;
}

CLI::App* AddGallery(CLI::App& app, CommandLine& line) {
    CLI::App* const gallery = app.add_subcommand("gallery", "show a photograph under every effect on a web page");
    gallery->add_option("PHOTO", line.gallery.photograph, "a picture, or a video, of which the first frame is taken")
        ->required();
    gallery->add_option("-o,--output", line.gallery.page, "the page; its pictures go to a folder beside it")
        ->required();
    gallery->add_flag("-y,--overwrite", line.gallery.overwrite, "overwrite an existing page and its pictures");
    gallery->add_flag("-q,--quiet", line.quiet, "errors only");
    AddCommonOptions(*gallery, line);
    return gallery;
}

int Run(int argc, char** argv) {
    CLI::App app("nifikral: video effects on pictures and videos");
    app.require_subcommand(1);
    CommandLine line;
    const CLI::App* const apply = AddApply(app, line);
    const CLI::App* const gallery = AddGallery(app, line);
    CLI::App* const list = app.add_subcommand("list", "list the effects");
    CLI::App* const info = app.add_subcommand("info", "tell an effect's parameters");
    info->add_option("EFFECT", line.effect, "its name")->required();
    for (CLI::App* const command : {list, info}) {
        command->add_flag("--json", line.json, "as JSON");
        AddCommonOptions(*command, line);
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        throw HostError(ExitCode::Usage, std::string(error.what()) + "; nifikral --help tells the usage");
    }
    SetVerbosity(line.quiet ? Verbosity::Quiet : line.verbose ? Verbosity::Verbose : Verbosity::Normal);
    for (const CLI::App* const command : app.get_subcommands())
        if (command->count("--cpu-features")) OverrideCpuFeatures(line.cpuFeatures);
    const EffectModule module(line.module);
    if (apply->parsed())
        Apply(line.apply, module);
    else if (gallery->parsed())
        MakeGallery(line.gallery, module);
    else
        std::fputs(
            (list->parsed() ? ListEffects(module, line.json) : DescribeEffect(module, line.effect, line.json)).c_str(),
            stdout);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    InstallSignalHandlers();
    CaptureFfmpegMessages();
    try {
        return Run(argc, argv);
    } catch (const HostError& error) {
        PrintError(error.what());
        return int(error.Code());
    } catch (const std::bad_alloc&) {
        PrintError("out of memory; use fewer --threads or smaller pictures");
    } catch (const std::exception& error) {
        PrintError(error.what());
    }
    return int(ExitCode::Failed);
}
