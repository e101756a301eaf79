#include "app/query_unload.h"

namespace brindle::app {

UnloadDecision Form_QueryUnload(UnloadMode mode, bool& closing) {
  if (mode == UnloadMode::kFormControlMenu) return {true, true};
  closing = true;
  return {false, false};
}

}  // namespace brindle::app
