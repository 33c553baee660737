#pragma once

#include <QByteArray>

#include <fstream>
#include <stdexcept>
#include <string>

// The bytes of a file of tests/golden: hex digits, and comment from a # to the end of the line.
inline QByteArray goldenFile(const std::string& name)
{
    std::ifstream file(GQLIB_GOLDEN "/" + name);
    if (!file)
        throw std::runtime_error("no file tests/golden/" + name);

    QByteArray digits;
    for (std::string line; std::getline(file, line);)
        digits += line.substr(0, line.find('#')).c_str();
    return QByteArray::fromHex(digits);
}
