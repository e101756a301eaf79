// The hidden main form's close rule: a user who closes it from its control
// menu only hides it (the program lives as long as the client); any other
// close — the program's own, the end of the session — marks the program as
// closing and lets the form go.
#pragma once

namespace brindle::app {

// Why the form is asked to close.
enum class UnloadMode {
  kFormControlMenu = 0,  // the user, from the control menu or the close button
  kFormCode = 1,         // the program itself
  kAppWindows = 2,       // the Windows session is ending
  kAppTaskManager = 3,   // the task manager
  kFormOwner = 5,        // the owner form is closing
};

struct UnloadDecision {
  bool cancel = false;  // the close does not happen
  bool hide = false;    // the form is hidden instead
};

// Sets `closing` when the close goes ahead.
UnloadDecision Form_QueryUnload(UnloadMode mode, bool& closing);

}  // namespace brindle::app
