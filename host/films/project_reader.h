#pragma once

#include <nlohmann/json.hpp>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "host/base/errors.h"
#include "host/media/ffmpeg_handles.h"

/// Reading project files so that all that is wrong with one is reported at once.
namespace Nifikral {

using Json = nlohmann::ordered_json;

/// The faults of one project, each with the item's name and the remedy. Of an item, the members of an object included,
/// only the first fault is reported: what is found there later follows from it.
class Faults {
 public:
    /// `project`: its file's name; empty where the items are options.
    explicit Faults(std::string project) : m_project(std::move(project)) {}

    /// "PROJECT: ITEM: WHAT".
    void Add(const std::string& item, const std::string& what);
    /// The same for a file that the project names and that cannot be read.
    void AddInput(const std::string& item, const std::string& what);
    /// An output that cannot be written; `line` names it.
    void AddOutput(const std::string& line);
    /// Ends the run with all of them: an input or output error when nothing else is at fault, else a usage error.
    void ThrowIfAny() const;

 private:
    // Only where the fault is the item's first.
    void Report(ExitCode code, const std::string& item, const std::string& what);

    std::string m_project;
    std::vector<std::string> m_lines;
    std::set<std::string> m_items;
    std::set<ExitCode> m_codes;
};

/// The whole numbers that an item may have.
struct Limits {
    int low = -2147483647 - 1, high = 2147483647;
};

/// One value of a project. A read that fails files a fault and returns something harmless.
class ProjectItem {
 public:
    /// `value` is borrowed; null where the project does not have it.
    ProjectItem(const Json* value, std::string name, Faults& faults)
        : m_value(value), m_name(std::move(name)), m_faults(&faults) {}

    const std::string& Name() const { return m_name; }
    /// Null counts as absent.
    explicit operator bool() const { return m_value && !m_value->is_null(); }
    void Fault(const std::string& what) const { m_faults->Add(m_name, what); }

    /// A member of an object.
    ProjectItem operator[](const char* key) const;
    /// The entries of a list; none when it is absent or no list.
    std::vector<ProjectItem> Entries() const;
    /// Files a fault for every member that is not among `keys`.
    void RefuseOtherKeys(std::span<const char* const> keys) const;

    int Integer(const Limits& limits = {}) const;
    int IntegerOr(int fallback, const Limits& limits = {}) const { return *this ? Integer(limits) : fallback; }
    double Real(double low, double high) const;
    bool Boolean() const;
    std::string Text() const;
    /// A list of whole numbers, as many as `shape` names, such as "[x, y]".
    std::vector<int> Integers(const char* shape, const Limits& limits = {}) const;
    /// Frames a second: a number, where 29.97 and the like mean 30000/1001, or a text "N/D".
    AVRational FrameRate() const;
    /// A colour, as ParseColour knows them.
    unsigned Colour() const;

 private:
    void Expect(const std::string& wanted) const;

    const Json* m_value;
    std::string m_name;
    Faults* m_faults;
};

/// Parses a project file. Throws input errors for one that cannot be read, is no JSON object, is longer than 16 MB or
/// nested more than 64 deep.
Json LoadProject(const std::string& path);

/// A file that a project names: relative names start at the project's folder.
std::string ProjectPath(const std::string& project, const std::string& file);

}  // namespace Nifikral
