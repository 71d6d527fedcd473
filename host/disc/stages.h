#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Nifikral {

/// A part of a long work that is made by a run of this command of its own, into one file.
struct Stage {
    std::string name;                ///< as messages have it, such as "film 3"
    std::vector<std::string> words;  ///< of the command line, behind the program
    std::string key;                 ///< what the result is made from; one of another key is made again
    std::string result;              ///< the file that the run leaves, whole or not at all
    double weight = 1;               ///< seconds that it takes, about
    int passes = 1;                  ///< how often it counts its frames through
};

/// The part of a key that stands for a file: its name, size and time of change. For a folder, of all files in it.
std::string KeyOfFile(const std::string& path);

/// Whether the stage's result is there and made from the same.
bool IsMade(const Stage& stage);

/// Does a stage's work in this run: `make` leaves the result. What is made already stays.
void MakeStage(const Stage& stage, const std::function<void()>& make);

/// Has all stages that are not made yet made by runs of their own, which do so by MakeStage: the longest first, some at
/// once, with `program` (empty: this one). `show` receives how much is done, from 0 to 1. What the runs print is
/// printed. When a run fails or this one is interrupted the others are ended, and what is complete stays for the next
/// time. Throws the first failure, with its exit code.
void MakeStages(const std::vector<Stage>& stages, const std::function<void(double)>& show,
                const std::string& program = {});

/// Holds a folder of results for one run; a second is refused. What a kill has left there goes away.
class WorkLock {
 public:
    /// Makes the folder where there is none. Throws output errors.
    explicit WorkLock(const std::string& folder);
    ~WorkLock();
    WorkLock(const WorkLock&) = delete;
    WorkLock& operator=(const WorkLock&) = delete;

    /// From now on the folder stays; a new one that nothing can be made in goes away with this object.
    void Keep() { m_isNew = false; }

 private:
    std::string m_folder;
    bool m_isNew = false;
    int m_file;
};

}  // namespace Nifikral
