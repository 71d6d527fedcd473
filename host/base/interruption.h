#pragma once

namespace Nifikral {

/// SIGINT, SIGTERM and SIGHUP, unless ignored, ask the run to stop; broken pipes and file size limits become ordinary
/// write errors.
void InstallSignalHandlers();
bool IsInterrupted();
/// Throws the error that ends an interrupted run, if it is one.
void ThrowIfInterrupted();

}  // namespace Nifikral
