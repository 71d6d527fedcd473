#include "bridges/python/film.h"

#include <unistd.h>

#include <utility>

#include "avbase/avbase_srcutils/pixel_formats.h"
#include "bridges/python/library.h"
#include "host/base/errors.h"
#include "host/films/menu_pages.h"
#include "host/media/picture_formats.h"

namespace Nifikral::Python {

FilmFrames::FilmFrames(PreparedFilm film) : m_film(std::move(film)), m_process(getpid()) {
    m_pictures.emplace(*m_film.generator, m_film.film, AVBased::formatRgba32);
}

FilmFrames::~FilmFrames() {
    // Its readers' threads are in the other process.
    if (m_process != getpid()) static_cast<void>(m_film.generator.release());
}

py::array FilmFrames::Frame(long long number, int channels, Order order) {
    if (m_process != getpid())
        throw HostError(ExitCode::Failed, "these frames were begun in another process; begin again in this one");
    if (number < 0 || number >= Count()) throw py::index_error("there are frames 0 to " + std::to_string(Count() - 1));
    py::array_t<std::uint8_t> array({py::ssize_t(Height()), py::ssize_t(Width()), py::ssize_t(channels)});
    const ArrayView to = ViewOfPicture(array, "frame");
    Unlocked([&] {
        const std::lock_guard guard(m_mutex);
        if (!m_pictures->GoTo(number))
            throw HostError(ExitCode::Usage, "these frames are made one after another; begin again");
        const FramePtr frame = m_pictures->Make();
        if (channels < 4) LayOverBlack(*frame);
        ArrayView row = to;
        row.height = 1;
        for (int y = 0; y < frame->height; ++y, row.data += to.rowStep)
            FromBgra(frame->data[0] + std::ptrdiff_t(y) * frame->linesize[0], row, order);
    });
    return array;
}

PreparedFilm OpenMenu(const std::string& project, const std::string& templateName, int page) {
    const std::string name = templateName.empty() ? TemplateOf(project) : templateName;
    if (name.empty())
        throw HostError(ExitCode::Usage, project + " does not name its template; give template=\"menu_...\"");
    RequireMenuTemplate(name, TheModule());
    Faults faults(project);
    const MenuProject menu = ReadMenuProject(project, name, nullptr, faults);
    faults.ThrowIfAny();
    const std::vector<MenuProject> pages = PagesOf(menu);
    if (page < 1 || std::size_t(page) > pages.size())
        throw HostError(ExitCode::Usage, "page " + std::to_string(page) + " is none of the menu's; it has " +
                                             std::to_string(pages.size()));
    return PrepareMenuPage(pages[std::size_t(page - 1)], name, TheModule(), project);
}

}  // namespace Nifikral::Python
