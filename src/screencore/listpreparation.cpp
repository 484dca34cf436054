#include "listpreparation.h"

#include "platform/datacontrol.h"
#include "platform/grid.h"

namespace adjustacc::screencore {

void prepareList(platform::Grid& grid) {
  grid.setAllowUpdate(false);
  grid.setSelectionMode(platform::Grid::SelectionMode::Multi);
  grid.clearSelection();
  grid.setFirstVisibleRow(0);
  grid.setRedraw(true);
}

}  // namespace adjustacc::screencore
