#pragma once

#include <QByteArray>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <fstream>
#include <stdexcept>
#include <string>

// The bytes of a file in tests/golden: hex digits, with comments from # to the end of the line.
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

// The content of a JSON file in tests/golden.
inline QJsonObject goldenJson(const std::string& name)
{
    QFile file(QString::fromStdString(GQLIB_GOLDEN "/" + name));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("no file tests/golden/" + name);
    return QJsonDocument::fromJson(file.readAll()).object();
}
