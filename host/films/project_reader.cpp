#include "host/films/project_reader.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "host/base/colour_text.h"
#include "host/base/nearest_names.h"
#include "host/base/text_file.h"
#include "host/media/frame_rate.h"

namespace Nifikral {

void Faults::Add(const std::string& item, const std::string& what) { Report(ExitCode::Usage, item, what); }
void Faults::AddInput(const std::string& item, const std::string& what) { Report(ExitCode::Input, item, what); }
void Faults::AddOutput(const std::string& line) {
    m_codes.insert(ExitCode::Output);
    m_lines.push_back(line);
}

void Faults::Report(ExitCode code, const std::string& item, const std::string& what) {
    // The item itself, then the objects that it is a member of.
    for (std::size_t end = item.size(); end != std::string::npos;
         end = end ? item.rfind('.', end - 1) : std::string::npos)
        if (m_items.contains(item.substr(0, end))) return;
    m_items.insert(item);
    m_codes.insert(code);
    m_lines.push_back((m_project.empty() ? "" : m_project + ": ") + item + ": " + what);
}

void Faults::ThrowIfAny() const {
    if (m_lines.empty()) return;
    std::string all;
    for (const std::string& line : m_lines) all += line + "\n";
    throw HostError(m_codes.size() == 1 ? *m_codes.begin() : ExitCode::Usage, all);
}

void ProjectItem::Expect(const std::string& wanted) const {
    std::string found = *this ? m_value->dump(-1, ' ', false, Json::error_handler_t::replace) : "missing";
    constexpr std::size_t longest = 60;
    if (found.size() > longest) found = found.substr(0, longest) + "...";
    Fault((*this ? "is " : "") + found + "; give " + wanted);
}

ProjectItem ProjectItem::operator[](const char* key) const {
    const Json* member = nullptr;
    if (*this && m_value->is_object())
        if (const auto found = m_value->find(key); found != m_value->end()) member = &*found;
    return {member, m_name.empty() ? key : m_name + "." + key, *m_faults};
}

std::vector<ProjectItem> ProjectItem::Entries() const {
    std::vector<ProjectItem> entries;
    if (!*this) return entries;
    if (!m_value->is_array()) {
        Expect("a list, [...]");
        return entries;
    }
    for (std::size_t i = 0; i < m_value->size(); ++i)
        entries.emplace_back(&(*m_value)[i], m_name + "[" + std::to_string(i) + "]", *m_faults);
    return entries;
}

void ProjectItem::RefuseOtherKeys(std::span<const char* const> keys) const {
    if (!*this) return;
    if (!m_value->is_object()) return Expect("an object, {...}");
    for (const auto& [key, value] : m_value->items()) {
        if (std::any_of(keys.begin(), keys.end(), [&name = key](const char* known) { return name == known; })) continue;
        const std::string meant = DidYouMean(key, {keys.begin(), keys.end()});
        m_faults->Add(m_name.empty() ? key : m_name + "." + key,
                      "is no key of a project" + (meant.empty() ? "; leave it out" : meant));
    }
}

int ProjectItem::Integer(const Limits& limits) const {
    if (*this && m_value->is_number_integer()) {
        const bool huge = m_value->is_number_unsigned() && m_value->get<std::uint64_t>() > 2147483647u;
        const auto number = m_value->get<std::int64_t>();
        if (!huge && number >= limits.low && number <= limits.high) return int(number);
    }
    Expect("a whole number from " + std::to_string(limits.low) + " to " + std::to_string(limits.high));
    return limits.low > 0 ? limits.low : 0;
}

double ProjectItem::Real(double low, double high) const {
    if (*this && m_value->is_number())
        if (const double number = m_value->get<double>(); number >= low && number <= high) return number;
    Expect("a number from " + Json(low).dump() + " to " + Json(high).dump());
    return low;
}

bool ProjectItem::Boolean() const {
    if (*this && m_value->is_boolean()) return m_value->get<bool>();
    Expect("true or false");
    return false;
}

std::string ProjectItem::Text() const {
    if (*this && m_value->is_string()) {
        std::string text = m_value->get<std::string>();
        if (text.find('\0') == std::string::npos) return text;
    }
    Expect("a text, \"...\"");
    return {};
}

std::vector<int> ProjectItem::Integers(const char* shape, const Limits& limits) const {
    const std::size_t count = std::size_t(std::count(shape, shape + std::strlen(shape), ',')) + 1;
    if (!*this || !m_value->is_array() || m_value->size() != count) {
        Expect(std::string(shape) + " with whole numbers");
        return std::vector<int>(count, std::max(0, limits.low));
    }
    std::vector<int> numbers;
    for (const ProjectItem& entry : Entries()) numbers.push_back(entry.Integer(limits));
    return numbers;
}

AVRational ProjectItem::FrameRate() const {
    std::string text;
    if (*this && m_value->is_number()) text = m_value->dump();
    if (*this && m_value->is_string()) text = m_value->get<std::string>();
    if (const std::optional<AVRational> rate = ParseFrameRate(text)) return *rate;
    Expect(frameRateForm);
    return {25, 1};
}

unsigned ProjectItem::Colour() const {
    if (*this && m_value->is_string())
        if (const auto colour = ParseColour(m_value->get<std::string>())) return *colour;
    Expect("a colour: a name such as \"red\", \"#rgb\" or \"#rrggbb\"");
    return 0;
}

namespace {

// Of objects and lists within one another. What is deeper is no project, and exhausts the stack of whoever descends.
constexpr int deepestProject = 64;

}  // namespace

Json LoadProject(const std::string& path) {
    const auto refuse = [&](const std::string& what) { throw HostError(ExitCode::Input, path + what); };
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) refuse(" is a folder; name the project file in it");
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        refuse(": " + std::string(errno == ENOENT
                                      ? "no such file; check the name, or let nifikral init write an example"
                                      : std::strerror(errno)));
    const std::string text = ReadText(stream, path, "project");
    try {
        constexpr bool throws = true, takeComments = true;
        const auto bounded = [&](int depth, Json::parse_event_t, const Json&) {
            if (depth > deepestProject) refuse(" is nested more than 64 deep, which no project is; check the file");
            return true;
        };
        Json project = Json::parse(text, bounded, throws, takeComments);
        if (!project.is_object()) refuse(" holds no JSON object; nifikral init writes an example");
        return project;
    } catch (const Json::exception& fault) {
        // What comes before the bracket is for programmers.
        std::string reason = fault.what();
        if (const std::size_t end = reason.find("] "); end != std::string::npos) reason.erase(0, end + 2);
        refuse(" is no JSON (" + reason + "); mend it there");
    }
    return {};
}

std::string ProjectPath(const std::string& project, const std::string& file) {
    return file.empty() ? file : (std::filesystem::path(project).parent_path() / file).lexically_normal().string();
}

}  // namespace Nifikral
