#include "host/disc/dvd_author.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/disc/disc_folder.h"
#include "host/disc/dvd_check.h"
#include "host/disc/highlights.h"
#include "host/disc/tool.h"
#include "host/media/media_sink.h"
#include "host/media/part_file.h"

namespace Nifikral {
namespace fs = std::filesystem;
namespace {

void WriteText(const fs::path& path, const std::string& text) {
    PartFile file(path.string(), true);
    file.Write(text);
    file.Commit(false);
}

void WritePicture(const fs::path& path, FramePtr picture) {
    OutputOptions options;
    options.path = path.string();
    options.overwrite = true;
    const std::unique_ptr<MediaSink> sink =
        OpenSink(options, TraitsOfFilm(picture->width, picture->height, {25, 1}, AV_PIX_FMT_BGRA), false);
    picture->pts = 0;
    PictureConverter(sink->Shape()).Convert(picture);
    sink->Write(std::move(picture), 0);
    sink->Finish();
}

void PrintOutput(const std::string& printed) {
    std::istringstream lines(printed);
    for (std::string line; std::getline(lines, line);) PrintDetail(line);
}

// Adds the marks of a page's buttons to its film, one stream of pictures after the other.
class ButtonMuxer {
 public:
    ButtonMuxer(const DiscProject& project, fs::path folder) : m_project(project), m_folder(std::move(folder)) {}

    std::string Mux(const DiscPage& page, const MadePage& film) const {
        const std::vector<std::string> outside = OutsideTitleSafe(page, m_project.menus, *m_project.profile);
        if (!outside.empty())
            PrintWarning(page.name + ": \"" + outside.front() + "\"" +
                         (outside.size() > 1 ? " and " + std::to_string(outside.size() - 1) + " more" : "") +
                         ": the mark reaches out of the area that every screen shows");
        std::string path = Add(page, film, film.path, DiscView::Whole);
        if (IsWide(*m_project.profile)) path = Add(page, film, path, DiscView::Letterboxed);
        return path;
    }

 private:
    std::string Add(const DiscPage& page, const MadePage& film, const std::string& input, DiscView view) const {
        const bool whole = view == DiscView::Whole;
        const std::string stem = page.name + (whole ? "" : "-letterboxed");
        const std::vector<HighlightBox> boxes = HighlightBoxes(page, m_project.menus, *m_project.profile, view);
        const auto draw = [&](const std::string& name, unsigned colour) {
            fs::path path = m_folder / (stem + name);
            WritePicture(path, DrawHighlights(boxes, m_project.menus.mark, colour, *m_project.profile));
            return path.string();
        };
        const std::string chosen = draw("-chosen.png", m_project.menus.chosen);
        const std::string pressed = draw("-pressed.png", m_project.menus.pressed);
        const fs::path script = m_folder / (stem + ".xml"), output = m_folder / (stem + ".mpg");
        WriteText(script, Script(page, film, boxes, chosen, pressed));
        const std::string printed = RunTool({{"spumux", "-s", whole ? "0" : "1", script.string()},
                                             "dvdauthor",
                                             m_folder.string(),
                                             input,
                                             output.string()});
        PrintOutput(printed);
        // It ends well although it has left marks out.
        std::string fault = FirstLineWith(printed, {"ERR:", "WARN:"});
        if (fault.empty() && printed.find("1 subtitles added, 0 subtitles skipped") == std::string::npos)
            fault = "it added none";
        if (!fault.empty())
            throw HostError(ExitCode::Failed, page.name + ": spumux leaves out the marks of buttons (" + fault +
                                                  "); choose fewer buttons or another \"mark\"");
        return output.string();
    }

    std::string Script(const DiscPage& page, const MadePage& film, const std::vector<HighlightBox>& boxes,
                       const std::string& chosen, const std::string& pressed) const {
        char start[32];
        const int hundredths = int(std::lround(film.loopStart * 100));
        std::snprintf(start, sizeof start, "%02d:%02d:%02d.%02d", hundredths / 360000, hundredths / 6000 % 60,
                      hundredths / 100 % 60, hundredths % 100);
        std::ostringstream text;
        text << "<subpictures format=\"" << (m_project.profile->height == 576 ? "PAL" : "NTSC")
             << "\"><stream><spu start=\"" << start << "\" force=\"yes\" highlight=\"" << chosen << "\" select=\""
             << pressed << "\">\n";
        for (std::size_t i = 0; i < boxes.size(); ++i) {
            const DiscButton& button = page.buttons[i];
            text << "<button name=\"b" << i + 1 << "\" x0=\"" << boxes[i].left << "\" y0=\"" << boxes[i].top
                 << "\" x1=\"" << boxes[i].right << "\" y1=\"" << boxes[i].bottom << "\" up=\"b" << button.up + 1
                 << "\" down=\"b" << button.down + 1 << "\" left=\"b" << button.left + 1 << "\" right=\"b"
                 << button.right + 1 << "\"/>\n";
        }
        text << "</spu></stream></subpictures>\n";
        return text.str();
    }

    const DiscProject& m_project;
    fs::path m_folder;
};

double SizeOf(const fs::path& path) {
    std::error_code error;
    const auto size = fs::file_size(path, error);
    return error ? 0 : double(size);
}

// Counts in bytes that are written: the menus with their marks, the disc and the image.
class AuthorProgress {
 public:
    AuthorProgress(const std::vector<MadeTitle>& titles, const std::vector<MadePage>& films, bool isImage,
                   const std::function<void(double)>& show)
        : m_show(show) {
        for (const MadePage& film : films) m_menus += SizeOf(film.path);
        for (const MadeTitle& title : titles) m_disc += SizeOf(title.path);
        m_disc += m_menus;
        m_whole = std::max(1.0, m_menus + m_disc * (isImage ? 2 : 1));
    }

    // What is written grows while a program runs.
    std::function<void()> During(std::function<double()> written) const {
        return [this, written = std::move(written)] { Show(std::min(written(), m_disc)); };
    }
    void End(double written) {
        Show(written);
        m_done += written;
    }
    double Disc() const { return m_disc; }

 private:
    void Show(double written) const { m_show(std::min(1.0, (m_done + written) / m_whole)); }

    const std::function<void(double)>& m_show;
    double m_menus = 0, m_disc = 0, m_whole = 1, m_done = 0;
};

// A disc's name in its image: capitals, digits and underscores.
std::string Label(const std::string& title) {
    constexpr std::size_t longest = 32;
    std::string label;
    for (const unsigned char c : title) {
        if (label.size() == longest) break;
        if (c < 128 && std::isalnum(c))
            label += char(std::toupper(c));
        else if (!label.empty() && label.back() != '_')
            label += '_';
    }
    while (!label.empty() && label.back() == '_') label.pop_back();
    return label.empty() ? "DVD" : label;
}

void WriteImage(const DiscProject& project, const fs::path& folder, const std::string& output, bool overwrite,
                const AuthorProgress& progress) {
    ClearDeadParts(output);
    PartFile image(output, overwrite);
    PrintOutput(RunTool(
        {{"genisoimage", "-quiet", "-dvd-video", "-V", Label(project.title), "-o", image.Path(), folder.string()},
         "genisoimage",
         folder.string(),
         {},
         {},
         progress.During([&] { return SizeOf(image.Path()); })}));
    image.Commit();
}

std::string PaletteText(const MadeTitle& title) {
    std::string text;
    for (const unsigned colour : title.palette) {
        char line[16];
        std::snprintf(line, sizeof line, "%06x\n", colour);
        text += line;
    }
    return text;
}

}  // namespace

bool IsWide(const FilmProfile& profile) { return av_cmp_q(profile.shownAspect, AVRational{3, 2}) > 0; }

// Players keep 36; a wide page keeps them for both of its views.
int MostButtons(const FilmProfile& profile) { return IsWide(profile) ? 18 : 36; }

bool IsImage(const std::string& output) { return output.ends_with(".iso") || output.ends_with(".ISO"); }

void CheckDvdOutput(const std::string& output, bool overwrite) {
    if (IsImage(output)) return CheckOutputPath(output, overwrite);
    std::error_code error;
    if (fs::exists(output, error) && !fs::is_directory(output, error))
        throw HostError(ExitCode::Output, output + " is a file; name a folder, or an image that ends in .iso");
    CheckDiscFolder(output, {"VIDEO_TS", "AUDIO_TS"}, "a DVD", overwrite);
}

void CheckPages(const DiscProject& project, const std::vector<DiscPage>& pages, Faults& faults) {
    CheckMenuCounts(project, pages, faults);
    const int most = MostButtons(*project.profile);
    for (const DiscPage& page : pages)
        if (page.buttons.empty() || page.buttons.size() > std::size_t(most))
            faults.Add("menus", page.name + " has " + std::to_string(page.buttons.size()) +
                                    " buttons; a page of a DVD's menu has 1 to " + std::to_string(most) +
                                    (IsWide(*project.profile) ? ", and 36 with pictures of 4:3" : ""));
}

void AuthorDisc(const DiscProject& project, const std::vector<DiscPage>& pages, const std::vector<MadeTitle>& titles,
                const std::vector<MadePage>& films, const std::string& output, const std::string& work, bool overwrite,
                const std::function<void(double)>& show) {
    CheckDvdOutput(output, overwrite);
    Faults faults(project.title);
    CheckPages(project, pages, faults);
    faults.ThrowIfAny();
    const TemporaryFolder files(fs::path(work) / "author");
    DvdFiles names;
    const ButtonMuxer muxer(project, files.Path());
    const bool isImage = IsImage(output);
    AuthorProgress progress(titles, films, isImage, show);
    for (std::size_t i = 0; i < pages.size(); ++i) {
        names.pages.push_back(muxer.Mux(pages[i], films[i]));
        progress.End(SizeOf(films[i].path));
    }
    for (std::size_t i = 0; i < titles.size(); ++i) {
        const fs::path path = files.Path() / ("palette" + std::to_string(i + 1) + ".rgb");
        WriteText(path, PaletteText(titles[i]));
        names.palettes.push_back(path.string());
    }
    const fs::path script = files.Path() / "disc.xml";
    WriteText(script, DvdScript(project, pages, titles, films, names));
    // A folder gets its name by being moved, which only works within a file system.
    const TemporaryFolder folder(isImage ? files.Path() / "disc" : FolderBeside(output));
    PrintOutput(RunTool({{"dvdauthor", "-o", folder.Path().string(), "-x", script.string()},
                         "dvdauthor",
                         folder.Path().string(),
                         {},
                         {},
                         progress.During([&] { return double(SizeOfFilesIn(folder.Path())); })}));
    progress.End(progress.Disc());
    CheckDvd(folder.Path().string(), pages, titles);
    if (isImage)
        WriteImage(project, folder.Path(), output, overwrite, progress);
    else
        MoveFolder(folder.Path(), output);
    show(1);
}

}  // namespace Nifikral
