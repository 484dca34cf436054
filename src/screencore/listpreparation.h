#pragma once
// The list preparation every list of the component gets before it is first shown: the clerk reads the
// rows and selects them (several at once with Ctrl or Shift), but never types into them; the list starts
// at its top with nothing selected and draws its changes.

namespace adjustacc::platform {
class Grid;
}

namespace adjustacc::screencore {

void prepareList(platform::Grid& grid);

// What every screen's SetGridBolding does to a list: the style set "UNBOLD" is set to normal weight, the list's
// own font to bold, and every column takes "UNBOLD" for its cells and its heading - so only what the list draws
// in its own font (its caption) is bold.
void boldCaptionOnly(platform::Grid& grid);

}  // namespace adjustacc::screencore
