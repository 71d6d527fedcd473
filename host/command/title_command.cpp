#include "host/command/title_command.h"

#include <memory>

#include "host/base/errors.h"
#include "host/command/common_options.h"
#include "host/films/title.h"

namespace Nifikral {

void AddTitle(CommandLine& line) {
    CLI::App* const title =
        line.app.add_subcommand("title", "put a title over a picture or a video")->group(makingCommands);
    struct Given {
        TitleOptions options;
        std::string in;
        std::vector<std::string> more;
    };
    const auto given = std::make_shared<Given>();
    TitleOptions& options = given->options;
    line.usages[title] = {"title TEXT IN OUT", "title TEXT IN... -o OUT"};
    constexpr double longest = 86400;
    title->add_option("TEXT", options.text, "the words; \\n begins a new line")->required();
    title->add_option("IN", given->in, "a picture, a video, pictures as in_%06d.png, or - for stdin");
    title->add_option("OUT", given->more,
                      "a video (with its sound) or a picture; out_%06d.png for one a frame; - for stdout");
    AddOutputApart(*title, options.run);
    AddPreparation(*title, options.preparation);
    title->add_option("--face", options.face, "font family");
    Take(line, title->add_option("--style", options.style, "any of these words")->type_name("STYLE"),
         WordsOf("title", "fontstyle"), true);
    title->add_option("--size", options.size, "of the font, in pixels (default: a twelfth of the height)")
        ->check(CLI::Range(1, 1000));
    title->add_option("--color", options.colour, "of the letters: a name such as red, #rgb or #rrggbb")
        ->type_name("COLOR");
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
    line.work[title] = [given](const EffectModule& module) {
        TitleOptions& options = given->options;
        options.inputs = JoinWords(given->in, "", given->more);
        options.run.namesMany = !options.run.output.path.empty();
        if (!options.run.namesMany) {
            if (options.inputs.size() != 2)
                throw HostError(ExitCode::Usage,
                                "title takes TEXT IN OUT, or TEXT IN... -o OUT; nifikral title --help "
                                "describes it");
            options.run.output.path = options.inputs.back();
            options.inputs.pop_back();
        }
        PutTitle(options, module);
    };
}

}  // namespace Nifikral
