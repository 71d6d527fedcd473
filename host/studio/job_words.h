#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/studio/film_reader.h"
#include "host/studio/studio_folder.h"
#include "host/studio/studio_json.h"

namespace Nifikral {

/// A text file that a job's command line names.
struct JobFile {
    std::string path, text;
};

/// A run of the command that a page asks for.
struct JobWords {
    std::string kind, title, output;
    bool overwrite = false;
    std::vector<std::string> words;  ///< of the command line, behind the program
    std::vector<JobFile> files;      ///< to be written before it
};

/// Reads a job. All files that it names lie in the folder. `facts` opens a film. Throws WebError and host errors.
JobWords ReadJob(const Json& job, const StudioFolder& folder,
                 const std::function<SourceFacts(const std::string&)>& facts);

/// The command line, to be typed in the folder.
std::string CommandLineOf(const JobWords& job);

}  // namespace Nifikral
