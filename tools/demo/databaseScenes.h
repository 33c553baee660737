#pragma once

#include <QString>

#include <tcpApi.h>

// Fetches and prints the station's point database: a table of points and values, the wave as a line of blocks and as an
// SVG file, events and an object.
void showDatabase(gqdb::CTcpAPI& client, const QString& svgPath);
