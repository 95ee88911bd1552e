#pragma once
// Taking a setup out of the catalogue, as the setup list editor's "Delete Setup" does: the
// entry goes, later setups move down by one (players ask for them by their new numbers), and
// the ".stp" file stays on disk so the setup can be imported again.
class SetupCatalogue;

// Removes setup n and commits. An empty catalogue is left as it is. Any other n outside
// 1..count (0 is what the editor passes with nothing selected) raises "Subscript out of range"
// before anything has changed: the catalogue and tessark.ini stay as they were.
void removeSetup(SetupCatalogue& setups, int n);
