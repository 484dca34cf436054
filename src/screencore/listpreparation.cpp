#include "listpreparation.h"

#include "platform/datacontrol.h"
#include "platform/grid.h"

#include <QFont>

namespace adjustacc::screencore {

void prepareList(platform::Grid& grid) {
  grid.setAllowUpdate(false);
  grid.setSelectionMode(platform::Grid::SelectionMode::Multi);
  grid.clearSelection();
  grid.setFirstVisibleRow(0);
  grid.setRedraw(true);
}

void boldCaptionOnly(platform::Grid& grid) {
  static const QString kUnbold = QStringLiteral("UNBOLD");
  grid.styleSet(kUnbold).setBold(false);
  QFont font = grid.font();
  font.setBold(true);
  grid.setFont(font);
  for (int i = 0; i < grid.columnCount(); ++i) {
    grid.column(i).setStyleSet(kUnbold);
    grid.column(i).setHeadStyleSet(kUnbold);
  }
}

}  // namespace adjustacc::screencore
