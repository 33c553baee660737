#pragma once

// Registers the comparisons of the codecs.
void compareCodec();
