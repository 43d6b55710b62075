// What the COM server `needsneighbour` needs from its own folder.
extern "C" __declspec(dllexport) int neighbour();

int neighbour() { return 7; }
