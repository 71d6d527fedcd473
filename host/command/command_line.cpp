#include "host/command/command_line.h"

#include <iostream>

#include "host/catalogue/catalogue.h"
#include "host/pages/documents.h"
#include "host/films/film_profile.h"
#include "host/pages/listing.h"
#include "host/films/menu_project.h"
#include "host/base/version.h"

namespace Nifikral {
namespace {

// Words for an option, told in its help: "fit: pad, crop or blur".
void Take(CommandLine& line, CLI::Option* option, const std::vector<std::string>& words) {
    std::string text = option->get_description();
    for (const std::string& word : words)
        text += (&word == &words.front() ? ": " : &word == &words.back() ? " or " : ", ") + word;
    option->description(text);
    line.words[option] = words;
}

const ParameterInfo& Parameter(const char* effect, const char* name) { return *FindParameter(effect, name); }
std::vector<std::string> WordsOf(const char* effect, const char* name) {
    const std::span<const char* const> words = Parameter(effect, name).words;
    return {words.begin(), words.end()};
}
CLI::Range RangeOf(const char* effect, const char* name) {
    const ValueRange range = Parameter(effect, name).sensible;
    return {int(range.low), int(range.high)};
}

// Settings that every subcommand shares.
void AddCommonOptions(CLI::App& app, CommandLine& line) {
    app.add_option("--module", line.module, "the effect module to load (else $NIFIKRAL_MODULE, else the one installed)")
        ->type_name("FILE");
    app.add_option("--cpu-features", line.cpuFeatures,
                   "the feature word that the module reads: 0 plain routines, 1 or 4 vectorised ones");
}

// Settings of every subcommand that makes a film or pictures.
void AddRunOptions(CLI::App& app, CommandLine& line, RunOptions& options) {
    app.add_option("-f,--output-format", options.output.format, "the output's format, such as nut or y4m")
        ->type_name("FORMAT");
    app.add_option("--format", options.pixelFormat,
                   "the pixel format that the module sees: a code or FFmpeg's name (default: the nearest)")
        ->type_name("FORMAT");
    app.add_option("--frames", options.frames, "only frames A-B, counted from 0, both included")->type_name("A-B");
    app.add_option("--chunk", options.chunk,
                   "only the run's frames A-B, without sound, to be joined by nifikral concat; nifikral plan tells how")
        ->type_name("A-B");
    app.add_flag("--skip-existing", options.skipExisting,
                 "leave an output that is complete as it is, and make one that is not anew");
    app.add_option("--threads", options.threads, "processor cores to use (default: all)")->check(CLI::Range(1, 1024));
    app.add_option("--encoder", options.output.encoder, "FFmpeg's encoder to use, such as ffv1")->type_name("ENCODER");
    app.add_option("--encoder-option", options.output.encoderOptions, "an option of the encoder")
        ->type_name("KEY=VALUE")
        ->allow_extra_args(false);
    app.add_flag("-y,--overwrite", options.output.overwrite, "overwrite an existing output");
    app.add_flag("--dry-run", options.dryRun, "check everything and tell what would be done");
    Take(line, app.add_option("--progress", line.progress, "how stderr tells how far it is")->type_name("FORM"),
         {"line", "json"});
    app.add_flag("-q,--quiet", line.quiet, "errors only");
    app.add_flag("-v,--verbose", line.verbose, "tell details");
    AddCommonOptions(app, line);
    line.runs[&app] = &options;
}

void AddApply(CLI::App& app, CommandLine& line) {
    CLI::App* const apply = app.add_subcommand("apply", "put effects on a picture or a video");
    apply->footer("Pictures are turned upright first, so that coordinates mean what the viewer sees.");
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
    line.work[apply] = [&line](const EffectModule& module) { Apply(line.apply, module); };
}

// Settings of every subcommand that makes a film of its own.
void AddFilmOptions(CLI::App& app, CommandLine& line, FilmOptions& options) {
    Take(line,
         app.add_option("--profile", options.profile,
                        "size, frame rate and shape of the pixels (with pal or ntsc an .mpg is as video DVDs want "
                        "it)")
             ->type_name("PROFILE"),
         ProfileNames());
    app.add_option("--audio", options.sound, "a file whose sound goes with the film")->type_name("FILE");
    app.add_option("--audio-fade", options.fade, "seconds in which the sound fades out at the end")
        ->capture_default_str()
        ->check(CLI::Range(0.0, 600.0));
    app.add_option("--length", options.length, "of the film in seconds, or audio for the length of the sound")
        ->type_name("SECONDS");
    AddRunOptions(app, line, options.run);
}

void AddMenu(CLI::App& app, CommandLine& line) {
    CLI::App* const menu = app.add_subcommand("menu", "make a disc menu from a project file");
    MenuOptions& options = line.menu;
    menu->add_option("TEMPLATE", options.templateName, "the menu's template; nifikral list shows all")->required();
    menu->add_option("PROJECT", options.project, "the project file; nifikral init makes an example")->required();
    menu->add_option("-o,--output", options.film.run.output.path,
                     "a video, a picture, pictures as out_%06d.png, or - for stdout")
        ->type_name("FILE")
        ->required();
    AddFilmOptions(*menu, line, options.film);
    menu->footer("Keys of a project file, which is JSON; file names start at its folder:\n" + DescribeProjectKeys());
    line.work[menu] = [&line](const EffectModule& module) { RenderMenu(line.menu, module); };
}

void AddSlideshow(CLI::App& app, CommandLine& line) {
    CLI::App* const show = app.add_subcommand("slideshow", "make a film of pictures");
    SlideshowOptions& options = line.slideshow;
    constexpr double longest = 86400;
    show->add_option("PICTURES", options.inputs, "folders with pictures, and pictures by their names, in this order")
        ->required();
    show->add_option("-o,--output", options.film.run.output.path,
                     "a video, a picture, pictures as out_%06d.png, or - for stdout")
        ->type_name("FILE")
        ->required();
    show->add_option("--seconds", options.pictureSeconds, "how long each picture stands alone")
        ->capture_default_str()
        ->check(CLI::Range(0.0, longest));
    show->add_option("--transition-seconds", options.transitionSeconds, "how long one takes to become the next")
        ->capture_default_str()
        ->check(CLI::Range(0.0, longest));
    Take(line,
         show->add_option("--transitions", options.transitions, "how one becomes the next, in turn, joined by commas")
             ->capture_default_str()
             ->delimiter(',')
             ->type_name("TRANSITION,...")
             ->allow_extra_args(false),
         WordsOf("slide", "transitions"));
    Take(line,
         show->add_option("--motion", options.motions, "how pictures move, in turn, joined by commas")
             ->capture_default_str()
             ->delimiter(',')
             ->type_name("MOTION,...")
             ->allow_extra_args(false),
         WordsOf("slide", "motion"));
    show->add_option("--motion-amount", options.motionAmount, "how much larger a moving picture gets, in percent")
        ->capture_default_str()
        ->check(RangeOf("slide", "motionAmount"));
    Take(line,
         show->add_option("--fit", options.fit, "what becomes of pictures of another shape")
             ->capture_default_str()
             ->type_name("FIT"),
         WordsOf("slide", "fit"));
    show->add_option("--seed", options.seed, "of what is random")->capture_default_str();
    CLI::Option* const size =
        show->add_option("--size", options.size, "of the film (default: 1920x1080)")->type_name("WxH");
    CLI::Option* const rate =
        show->add_option("--rate", options.frameRate, "frames a second (default: 25)")->type_name("NUMBER");
    show->add_flag("--strict", options.strict, "end when a picture cannot be read, instead of leaving it out");
    AddFilmOptions(*show, line, options.film);
    size->excludes("--profile");
    rate->excludes("--profile");
    line.work[show] = [&line](const EffectModule& module) { MakeSlideshow(line.slideshow, module); };
}

void AddTitle(CLI::App& app, CommandLine& line) {
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
    Take(line, title->add_option("--style", options.style, "any of these words")->type_name("STYLE"),
         WordsOf("title", "fontstyle"));
    title->add_option("--size", options.size, "of the font, in pixels (default: a twelfth of the height)")
        ->check(CLI::Range(1, 1000));
    title->add_option("--color", options.colour, "of the letters")->type_name("#RRGGBB");
    Take(line,
         title->add_option("--place", options.place, "where it stands")->capture_default_str()->type_name("PLACE"),
         TitlePlaces());
    Take(line, title->add_option("--in", options.inMotion, "how it comes")->type_name("MOTION"),
         WordsOf("title", "inMotion"));
    Take(line, title->add_option("--out", options.outMotion, "how it goes")->type_name("MOTION"),
         WordsOf("title", "outMotion"));
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
    line.work[title] = [&line](const EffectModule& module) { PutTitle(line.title, module); };
}

void AddInit(CLI::App& app, CommandLine& line) {
    CLI::App* const init = app.add_subcommand("init", "write an example project with its pictures");
    InitOptions& options = line.init;
    init->add_option("TEMPLATE", options.templateName, "the template that it is for; nifikral list shows all")
        ->required();
    init->add_option("FOLDER", options.folder, "where to put it (default: a new folder named as the template)");
    init->add_flag("-y,--overwrite", options.overwrite, "overwrite files of the same names");
    init->add_flag("-q,--quiet", line.quiet, "errors only");
    AddCommonOptions(*init, line);
    line.work[init] = [&line](const EffectModule& module) {
        const std::string project = WriteExampleProject(line.init, module);
        if (!line.quiet)
            std::cerr << project << " and its pictures are written; make the film with\n  nifikral menu "
                      << line.init.templateName << " " << project << " -o menu.mp4\n";
    };
}

void AddGallery(CLI::App& app, CommandLine& line) {
    CLI::App* const gallery = app.add_subcommand("gallery", "show a photograph under every effect on a web page");
    gallery->add_option("PHOTO", line.gallery.photograph, "a picture, or a video, of which the first frame is taken")
        ->required();
    gallery->add_option("-o,--output", line.gallery.page, "the page; its pictures go to a folder beside it")
        ->type_name("FILE")
        ->required();
    gallery->add_flag("-y,--overwrite", line.gallery.overwrite, "overwrite an existing page and its pictures");
    gallery->add_flag("-q,--quiet", line.quiet, "errors only");
    AddCommonOptions(*gallery, line);
    line.work[gallery] = [&line](const EffectModule& module) { MakeGallery(line.gallery, module); };
}

void AddPlan(CLI::App& app, CommandLine& line) {
    line.plan = app.add_subcommand("plan", "print command lines that share a run out to several machines");
    line.plan->add_option("--chunks", line.planning.chunks, "how many")
        ->capture_default_str()
        ->check(CLI::Range(1, 100000));
    Take(line,
         line.plan->add_option("--format", line.planning.format, "what is to hand them out")
             ->capture_default_str()
             ->type_name("FORMAT"),
         PlanFormats());
    line.plan->prefix_command()->footer(
        "Behind these options stands the run: apply, menu, slideshow or title with all of its own.");
}

void AddConcat(CLI::App& app, CommandLine& line) {
    line.concat =
        app.add_subcommand("concat", "join the chunks of a run, without coding them again, and add the sound");
    line.concat->add_option("--last", line.lastFrame, "the run's last frame")
        ->required()
        ->check(CLI::NonNegativeNumber);
    line.concat->prefix_command()->footer("Behind this option stands the run, as nifikral plan prints it.");
}

void AddReference(CLI::App& app, CommandLine& line) {
    CLI::App* const reference =
        app.add_subcommand("reference", "show all effects and menus, with all parameters, on one page");
    reference->add_option("PHOTO", line.reference.photograph, "a picture that the effects are shown on")->required();
    reference->add_option("-o,--output", line.reference.page, "the page, which holds its pictures itself")
        ->type_name("FILE")
        ->required();
    reference->add_flag("-y,--overwrite", line.reference.overwrite, "overwrite an existing page");
    reference->add_flag("-q,--quiet", line.quiet, "errors only");
    AddCommonOptions(*reference, line);
    line.work[reference] = [&line](const EffectModule& module) { MakeReference(line.reference, module); };
}

void AddListings(CLI::App& app, CommandLine& line) {
    CLI::App* const list = app.add_subcommand("list", "list the effects");
    CLI::App* const info = app.add_subcommand("info", "tell an effect's parameters");
    info->add_option("NAME", line.effect, "the effect's name")->required();
    for (CLI::App* const command : {list, info}) {
        command->add_flag("--json", line.json, "as JSON (nifikral generate schema tells its form)");
        AddCommonOptions(*command, line);
    }
    line.work[list] = [&line](const EffectModule& module) { std::cout << ListEffects(module, line.json); };
    line.work[info] = [&line](const EffectModule& module) {
        std::cout << DescribeEffect(module, line.effect, line.json);
    };
}

void AddGenerate(CLI::App& app, CommandLine& line) {
    CLI::App* const generate = app.add_subcommand("generate", "print what is made from all that is known of effects");
    Take(line, generate->add_option("DOCUMENT", line.document, "which")->required(), DocumentNames());
    generate->footer(
        "The manual pages are man for the command and man-effects, the completions bash, zsh and fish, as in: source "
        "<(nifikral generate bash).");
    AddCommonOptions(*generate, line);
    line.work[generate] = [&line](const EffectModule& module) {
        std::cout << MakeDocument(line.document, line.Whole(), line.Commands(), AllEffects(module));
    };
}

// "INT in [1 - 100]" of a check, as "1 to 100".
std::string CheckedRange(const std::string& typeName) {
    const std::size_t begin = typeName.find('['), dash = typeName.find(" - "), end = typeName.find(']');
    if (begin == std::string::npos || dash == std::string::npos || end == std::string::npos) return {};
    return typeName.substr(begin + 1, dash - begin - 1) + " to " + typeName.substr(dash + 3, end - dash - 3);
}

OptionDescription Describe(const CLI::Option& option, const std::vector<std::string>& words) {
    OptionDescription told;
    for (const std::string& name : option.get_snames()) told.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) told.names.push_back("--" + name);
    const std::string type = option.get_type_name();
    if (option.get_positional())
        told.value = option.get_name(true);
    else if (option.get_expected_max() > 0)
        told.value = type.substr(0, type.find(':'));
    for (const char* const number : {"INT", "UINT", "FLOAT"})
        if (told.value == number) told.value = "NUMBER";
    told.meaning = option.get_description();
    told.range = CheckedRange(type);
    told.defaultText = option.get_default_str();
    // A list stands in brackets there, and on the command line without.
    if (told.defaultText.starts_with('[')) told.defaultText = told.defaultText.substr(1, told.defaultText.size() - 2);
    told.words = words;
    told.required = option.get_required();
    told.repeated = option.get_expected_max() > 1;
    return told;
}

CommandDescription Describe(const CLI::App& app, const std::map<const CLI::Option*, std::vector<std::string>>& words) {
    CommandDescription told{app.get_name(), app.get_description(), app.get_footer(), {}};
    for (const CLI::Option* const option : app.get_options()) {
        const auto known = words.find(option);
        told.options.push_back(Describe(*option, known == words.end() ? std::vector<std::string>() : known->second));
    }
    return told;
}

}  // namespace

CommandLine::CommandLine() : app("video effects and disc menus for pictures and videos", "nifikral") {
    app.require_subcommand(1);
    app.set_version_flag("--version", "nifikral " + std::string(Version()), "tell the version");
    app.set_help_flag("-h,--help", "tell the usage");
    for (const auto add : {AddApply, AddMenu, AddSlideshow, AddTitle, AddInit, AddGallery, AddReference, AddPlan,
                           AddConcat, AddListings, AddGenerate})
        add(app, *this);
    // Last: subcommands that are added later would inherit it.
    app.footer(
        "Exit codes: 0 done, 1 failed while running, 2 wrong usage, 3 input unreadable, 4 output not writable, 130 "
        "interrupted.");
}

CommandDescription CommandLine::Whole() const { return Describe(app, words); }

std::vector<CommandDescription> CommandLine::Commands() const {
    std::vector<CommandDescription> commands;
    for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; }))
        commands.push_back(Describe(*command, words));
    return commands;
}

}  // namespace Nifikral
