#pragma once

/// Whether the byte starts a two-byte character of the current code page.
bool dsIsMultiByteLead(unsigned char byte);
