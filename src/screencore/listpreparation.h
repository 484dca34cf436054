#pragma once
// The list preparation every list of the component gets before it is first shown: the clerk reads the
// rows and selects them (several at once with Ctrl or Shift), but never types into them; the list starts
// at its top with nothing selected and draws its changes.

namespace adjustacc::platform {
class Grid;
}

namespace adjustacc::screencore {

void prepareList(platform::Grid& grid);

}  // namespace adjustacc::screencore
