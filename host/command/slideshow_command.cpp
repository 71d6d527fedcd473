#include "host/command/slideshow_command.h"

#include <memory>

#include "host/command/common_options.h"
#include "host/films/slide_pictures.h"
#include "host/films/slideshow.h"

namespace Nifikral {

void AddSlideshow(CommandLine& line) {
    CLI::App* const show = line.app.add_subcommand("slideshow", "make a film of pictures")->group(makingCommands);
    const auto given = std::make_shared<SlideshowOptions>();
    SlideshowOptions& options = *given;
    constexpr double longest = 86400;
    show->add_option("PICTURES", options.inputs,
                     "folders, pictures and films by their names, in this order, and @FILE for a list of them")
        ->required();
    AddFilmOutput(*show, options.film);
    show->add_option("--seconds", options.pictureSeconds, "how long each picture stands alone")
        ->capture_default_str()
        ->check(CLI::Range(0.0, longest));
    show->add_option("--transition-seconds", options.transitionSeconds, "how long one takes to become the next")
        ->capture_default_str()
        ->check(CLI::Range(0.0, longest));
    Take(line,
         show->add_option("--order", options.order, "of the pictures; date is when they were taken")
             ->capture_default_str()
             ->type_name("ORDER"),
         SlideOrders());
    show->add_option("--captions", options.captions,
                     "below each picture: a text with {name}, {number}, {date}, {time}, {description} or {place}")
        ->type_name("TEXT");
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
    show->footer(
        "Films play for their length, and with their sound where no --audio is given. A list has a line for each "
        "picture, FILE | SECONDS | CAPTION, of which the last two may be left out; its file names start at its "
        "folder.");
    size->excludes("--profile");
    rate->excludes("--profile");
    line.work[show] = [given](const EffectModule& module) { MakeSlideshow(*given, module); };
}

}  // namespace Nifikral
