#include "frontEnd.h"

#include "gqtool/records/recordFields.h"
#include "shared/stationProtocol.h"

#include <byte2Fep.h>

using gqdb::CByte2Fep;

// --- The node and its lines ---------------------------------------------------------------------------------------

// text1 is the node's name, text2 its place, text5 and text6 its two addresses.
static std::vector<gqdb::NodeHead> nodeHeads()
{
    gqdb::NodeHead head;
    head.nodeId = 1;
    head.text1 = "FEP1";
    head.text2 = QString::fromUtf8("锅炉房"); // boiler house
    head.text5 = "10.0.1.11";
    head.text6 = "10.0.2.11";
    return {head};
}

// text1 is the line's name, text2 its protocol, text3 its destination, word1 its speed. text4 must have two bytes in
// each entry: byte2CommItems assumes that length when it steps to the next entry.
static std::vector<gqdb::CommItem> commItems()
{
    gqdb::CommItem serial;
    serial.commId = 1;
    serial.text1 = "COM1";
    serial.text2 = "Modbus RTU";
    serial.text3 = "/dev/ttyS1";
    serial.text4 = "8N";
    serial.word1 = 9600;
    gqdb::CommItem network;
    network.commId = 2;
    network.text1 = "NET1";
    network.text2 = "Modbus TCP";
    network.text3 = "10.0.3.5";
    network.text4 = "TC";
    network.word1 = 502;
    return {serial, network};
}

// Appends bytes after the list: byte2CommItem needs as many bytes after an entry as its text3 has.
static QByteArray readableCommItems()
{
    const std::vector<gqdb::CommItem> list = commItems();
    QByteArray data;
    CByte2Fep::commItems2Byte(list, data);
    return data + QByteArray(list.back().text3.toUtf8().size(), '\0');
}

// --- Signals ------------------------------------------------------------------------------------------------------
// text1 is a signal's name, text2 its description, text3 its unit; word1 is its line.

static std::vector<gqdb::YcItem> ycItems()
{
    gqdb::YcItem item;
    item.itemId = 1;
    item.text1 = "BOILER1.TEMP";
    item.text2 = "live steam temperature";
    item.text3 = QString::fromUtf8("°C");
    item.word1 = 1;
    item.coef1 = 0.25f; // value of one raw step
    item.coef2 = -50;   // the value at raw 0
    return {item};
}

static std::vector<gqdb::YxItem> yxItems()
{
    gqdb::YxItem item;
    item.itemId = 2;
    item.text1 = "GEN1.BREAKER";
    item.text2 = "generator breaker closed";
    item.word1 = 2;
    return {item};
}

static std::vector<gqdb::YdItem> ydItems()
{
    gqdb::YdItem item;
    item.itemId = 3;
    item.text1 = "GEN1.ENERGY";
    item.text2 = "energy delivered";
    item.text3 = "MWh";
    item.word1 = 2;
    item.float1 = 0.5f; // a pulse
    return {item};
}

static std::vector<gqdb::YbItem> ybItems()
{
    gqdb::YbItem pumps;
    pumps.itemId = 4;
    pumps.text1 = "FEED.PUMPS";
    pumps.text2 = "feed pumps running";
    pumps.word1 = 1;
    gqdb::YbItem step;
    step.itemId = 5;
    step.text1 = "TRAFO1.TAP";
    step.text2 = "tap changer's step";
    step.word1 = 2;
    return {pumps, step};
}

static QByteArray readableYbItems()
{
    QByteArray data;
    writeReadable(ybItems(), data);
    return data;
}

// --- Requests -----------------------------------------------------------------------------------------------------

QByteArray frontEndReply(unsigned char command)
{
    QByteArray data;
    switch (command) {
    case commandNodeHeads:
        CByte2Fep::nodeHeads2Byte(nodeHeads(), data);
        break;
    case commandCommItems:
        data = readableCommItems();
        break;
    case commandYcItems:
        CByte2Fep::ycItems2Byte(ycItems(), data);
        break;
    case commandYxItems:
        CByte2Fep::yxItems2Byte(yxItems(), data);
        break;
    case commandYdItems:
        CByte2Fep::ydItems2Byte(ydItems(), data);
        break;
    case commandYbItems:
        data = readableYbItems();
        break;
    default:
        break;
    }
    return data;
}
