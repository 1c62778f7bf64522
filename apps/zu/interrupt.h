// Signals: an interrupted run removes its unfinished files and ends with 128 + signal, which is 130
// for Ctrl-C; a closed pipe or a size limit is an error of the write, not the end of the program.
#pragma once

namespace cli {

// Once, before anything is opened. Also makes sure that descriptors 0 to 2 are taken, so that no
// result file gets the number of a standard output that the caller had closed.
void InstallSignalHandlers();

// Names a file to be removed if a signal ends the program; returns its slot, for
// ForgetUnfinishedFile. -1: the path is too long or too many files are open; nothing is kept.
int RememberUnfinishedFile(const char* szPath);
void ForgetUnfinishedFile(int iSlot);

// Whether a progress line stands on standard error, which an ending signal, or false, then erases.
void SetProgressLine(bool bShown);

// Holds the ending signals back while it lives: a file cannot appear without being remembered.
class SignalPause {
 public:
  SignalPause();
  ~SignalPause();
  SignalPause(const SignalPause&) = delete;
  SignalPause& operator=(const SignalPause&) = delete;

 private:
  alignas(16) unsigned char m_aOldMask[128];
};

}  // namespace cli
