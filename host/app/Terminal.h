#pragma once

namespace kinora::host {

/// Columns of the terminal that the standard output is; 0 when it is none.
int TerminalWidth();

/// From now on Ctrl-C (on Windows Ctrl-Break, elsewhere a request to terminate, too) asks the run to stop after its
/// step; the second time it ends the program at once. What the program was started to ignore it goes on ignoring. A
/// console that is closed also asks for the stop, and goes when the program has ended, or after some seconds.
void CatchInterrupts();
bool IsInterrupted();

} // namespace kinora::host
