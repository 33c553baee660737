#pragma once

#include <tcpApi.h>

// Fetches and shows what the station's front-end processor has: its node, its lines and their signals.
void showFrontEnd(gqdb::CTcpAPI& client);
