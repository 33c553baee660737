#pragma once

#include <tcpApi.h>

// Fetches and prints the station's front-end processor: its node, its lines and their signals.
void showFrontEnd(gqdb::CTcpAPI& client);
