#pragma once

// Registers the comparisons of the frame clients.
void compareApi();
