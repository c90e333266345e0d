#include "pathkit/pathkit.h"

#include "basix/basix.h"

bool dsIsMultiByteLead(unsigned char byte) { return utIsMultiByteLead(byte); }
