// The command nifikral: puts the module's effects on pictures and videos, and makes films with its generators.

#include <malloc.h>

#include <CLI/CLI.hpp>
#include <cstdio>

#include "host/apply.h"
#include "host/cpu_features.h"
#include "host/effect_json.h"
#include "host/errors.h"
#include "host/example_project.h"
#include "host/gallery.h"
#include "host/interruption.h"
#include "host/listing.h"
#include "host/log.h"
#include "host/media_manager.h"
#include "host/menu.h"
#include "host/menu_project.h"
#include "host/slideshow.h"
#include "host/title.h"

namespace {

using namespace Nifikral;

struct CommandLine {
    std::string module;
    unsigned cpuFeatures = 0;
    bool quiet = false, verbose = false, json = false;
    std::string effect;
    ApplyOptions apply;
    MenuOptions menu;
    SlideshowOptions slideshow;
    TitleOptions title;
    InitOptions init;
    GalleryOptions gallery;
};

// Settings that every subcommand shares.
void AddCommonOptions(CLI::App& app, CommandLine& line) {
    app.add_option("--module", line.module,
                   "the effect module to load (else $NIFIKRAL_MODULE, else the one installed)");
    app.add_option("--cpu-features", line.cpuFeatures,
                   "the feature word that the module reads: 0 plain routines, 1 or 4 vectorised ones");
}

// Settings of every subcommand that makes a film or pictures.
void AddRunOptions(CLI::App& app, CommandLine& line, RunOptions& options) {
    app.add_option("-f,--output-format", options.output.format, "the output's format, such as nut or y4m");
    app.add_option("--format", options.pixelFormat,
                   "the pixel format that the module sees: a code or FFmpeg's name (default: the nearest)");
    app.add_option("--frames", options.frames, "only frames A-B, counted from 0, both included");
    app.add_option("--threads", options.threads, "processor cores to use (default: all)")->check(CLI::Range(1, 1024));
    app.add_option("--encoder", options.output.encoder, "FFmpeg's encoder to use, such as ffv1");
    app.add_option("--encoder-option", options.output.encoderOptions, "key=value for the encoder")
        ->allow_extra_args(false);
    app.add_flag("-y,--overwrite", options.output.overwrite, "overwrite an existing output");
    app.add_flag("--dry-run", options.dryRun, "check everything and tell what would be done");
    app.add_flag("-q,--quiet", line.quiet, "errors only");
    app.add_flag("-v,--verbose", line.verbose, "tell details");
    AddCommonOptions(app, line);
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
        ->add_option("OUT", options.run.output.path,
                     "by its extension a video (the sound is copied) or a picture; out_%06d.png for one a frame; - for "
                     "stdout")
        ->required();
    apply
        ->add_option("EFFECT", options.effects,
                     "EFFECT[:name=value]...; a value may change over time: A..B over the run, @frame:value,... at key "
                     "points")
        ->required();
    apply->add_flag("--keep-going", options.keepGoing, "take what is readable of a damaged input");
    AddRunOptions(*apply, line, options.run);
    return apply;
}

// Settings of every subcommand that makes a film of its own.
void AddFilmOptions(CLI::App& app, CommandLine& line, FilmOptions& options) {
    app.add_option("--profile", options.profile,
                   "size, frame rate and shape of the pixels: pal-4:3, pal-16:9, ntsc-4:3, ntsc-16:9, hd or uhd; with "
                   "one of the first four an .mpg is as video DVDs want it");
    app.add_option("--audio", options.sound, "a file whose sound goes with the film");
    app.add_option("--audio-fade", options.fade, "seconds in which the sound fades out at the end")
        ->capture_default_str()
        ->check(CLI::Range(0.0, 600.0));
    app.add_option("--length", options.length, "of the film in seconds, or audio for the length of the sound");
    AddRunOptions(app, line, options.run);
}

CLI::App* AddMenu(CLI::App& app, CommandLine& line) {
    CLI::App* const menu = app.add_subcommand("menu", "make a disc menu from a project file");
    MenuOptions& options = line.menu;
    menu->add_option("TEMPLATE", options.templateName, "the menu's template; nifikral list shows all")->required();
    menu->add_option("PROJECT", options.project, "the project file; nifikral init makes an example")->required();
    menu->add_option("-o,--output", options.film.run.output.path,
                     "a video, a picture, pictures as out_%06d.png, or - for stdout")
        ->required();
    AddFilmOptions(*menu, line, options.film);
    menu->footer("Keys of a project file, which is JSON; file names start at its folder:\n" + DescribeProjectKeys());
    return menu;
}

CLI::App* AddSlideshow(CLI::App& app, CommandLine& line) {
    CLI::App* const show = app.add_subcommand("slideshow", "make a film of pictures");
    SlideshowOptions& options = line.slideshow;
    constexpr double longest = 86400;
    show->add_option("PICTURES", options.inputs, "folders with pictures, and pictures by their names, in this order")
        ->required();
    show->add_option("-o,--output", options.film.run.output.path,
                     "a video, a picture, pictures as out_%06d.png, or - for stdout")
        ->required();
    show->add_option("--seconds", options.pictureSeconds, "how long each picture stands alone")
        ->capture_default_str()
        ->check(CLI::Range(0.0, longest));
    show->add_option("--transition-seconds", options.transitionSeconds, "how long one takes to become the next")
        ->capture_default_str()
        ->check(CLI::Range(0.0, longest));
    show->add_option("--transitions", options.transitions, "which, in turn (nifikral info slide lists them)")
        ->capture_default_str()
        ->delimiter(',')
        ->allow_extra_args(false);
    show->add_option("--motion", options.motions, "how pictures move, in turn, such as none or zoomin,panleft")
        ->capture_default_str()
        ->delimiter(',')
        ->allow_extra_args(false);
    show->add_option("--motion-amount", options.motionAmount, "how much larger a moving picture gets, in percent")
        ->capture_default_str()
        ->check(CLI::Range(1, 100));
    show->add_option("--fit", options.fit, "pictures of another shape: blur, pad or crop")->capture_default_str();
    show->add_option("--seed", options.seed, "of what is random")->capture_default_str();
    CLI::Option* const size = show->add_option("--size", options.size, "of the film (default: 1920x1080)");
    CLI::Option* const rate = show->add_option("--rate", options.frameRate, "frames a second (default: 25)");
    show->add_flag("--strict", options.strict, "end when a picture cannot be read, instead of leaving it out");
    AddFilmOptions(*show, line, options.film);
    size->excludes("--profile");
    rate->excludes("--profile");
    return show;
}

CLI::App* AddTitle(CLI::App& app, CommandLine& line) {
    CLI::App* const title = app.add_subcommand("title", "put a title over a picture or a video");
    TitleOptions& options = line.title;
    constexpr double longest = 86400;
    title->add_option("TEXT", options.text, "the words; \\n begins a new line")->required();
    title->add_option("IN", options.input, "a picture, a video, pictures as in_%06d.png, or - for stdin")->required();
    title
        ->add_option("OUT", options.run.output.path,
                     "a video (the sound is copied) or a picture; out_%06d.png for one a frame; - for stdout")
        ->required();
    title->add_option("--face", options.face, "font family");
    title->add_option("--style", options.style, "words of bold, italic, underline, outline and shadow");
    title->add_option("--size", options.size, "of the font, in pixels (default: a twelfth of the height)")
        ->check(CLI::Range(1, 1000));
    title->add_option("--color", options.colour, "as #rrggbb");
    title->add_option("--place", options.place, "top-left, top, top-right, left, middle, right, bottom-left and so on")
        ->capture_default_str();
    title->add_option("--in", options.inMotion, "how it comes: none, left, right, up, down or zoom");
    title->add_option("--out", options.outMotion, "how it goes, the same words");
    title->add_option("--in-seconds", options.inSeconds, "how long it takes to come")
        ->capture_default_str()
        ->check(CLI::Range(0.0, longest));
    title->add_option("--out-seconds", options.outSeconds, "how long it takes to go")
        ->capture_default_str()
        ->check(CLI::Range(0.0, longest));
    title->add_option("--begin", options.begin, "when it begins to come, in seconds")
        ->capture_default_str()
        ->check(CLI::Range(0.0, longest));
    title->add_option("--seconds", options.seconds, "how long it shows (default: to the end; over one picture, 5)")
        ->check(CLI::Range(0.0, longest));
    AddRunOptions(*title, line, options.run);
    return title;
}

CLI::App* AddInit(CLI::App& app, CommandLine& line) {
    CLI::App* const init = app.add_subcommand("init", "write an example project with its pictures");
    InitOptions& options = line.init;
    init->add_option("TEMPLATE", options.templateName, "the template that it is for; nifikral list shows all")
        ->required();
    init->add_option("FOLDER", options.folder, "where to put it (default: a new folder named as the template)");
    init->add_flag("-y,--overwrite", options.overwrite, "overwrite files of the same names");
    init->add_flag("-q,--quiet", line.quiet, "errors only");
    AddCommonOptions(*init, line);
    return init;
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
    app.set_version_flag("--version", "nifikral " NIFIKRAL_VERSION);
    CommandLine line;
    const CLI::App* const apply = AddApply(app, line);
    const CLI::App* const menu = AddMenu(app, line);
    const CLI::App* const slideshow = AddSlideshow(app, line);
    const CLI::App* const title = AddTitle(app, line);
    const CLI::App* const init = AddInit(app, line);
    const CLI::App* const gallery = AddGallery(app, line);
    CLI::App* const list = app.add_subcommand("list", "list the effects");
    CLI::App* const info = app.add_subcommand("info", "tell an effect's parameters");
    info->add_option("EFFECT", line.effect, "its name")->required();
    const CLI::App* const schema =
        app.add_subcommand("schema", "print the JSON schema of what list and info tell with --json");
    for (CLI::App* const command : {list, info}) {
        command->add_flag("--json", line.json, "as JSON");
        AddCommonOptions(*command, line);
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& told) {
        return app.exit(told);
    } catch (const CLI::ParseError& error) {
        throw HostError(ExitCode::Usage, std::string(error.what()) + "; nifikral --help tells the usage");
    }
    SetVerbosity(line.quiet ? Verbosity::Quiet : line.verbose ? Verbosity::Verbose : Verbosity::Normal);
    if (schema->parsed()) {
        std::fputs(effectsSchema, stdout);
        return 0;
    }
    for (const CLI::App* const command : app.get_subcommands())
        if (command->count("--cpu-features")) OverrideCpuFeatures(line.cpuFeatures);
    MediaManager manager;
    const EffectModule module(line.module, &manager);
    if (apply->parsed())
        Apply(line.apply, module);
    else if (menu->parsed())
        RenderMenu(line.menu, module);
    else if (slideshow->parsed())
        MakeSlideshow(line.slideshow, module);
    else if (title->parsed())
        PutTitle(line.title, module);
    else if (init->parsed())
        WriteExampleProject(line.init, module);
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
    // Pictures come and go by the thousand: memory given back to the system each time would be cleared each time.
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
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
