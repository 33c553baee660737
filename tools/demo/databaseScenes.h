#pragma once

#include <QString>

#include <tcpApi.h>

// Fetches and shows the station's point database: a table of points and values, the wave as a line of blocks and as an
// SVG file, events and object.
void showDatabase(gqdb::CTcpAPI& client, const QString& svgPath);
