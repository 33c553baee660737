#include "frontEndScenes.h"

#include "demo.h"
#include "shared/console.h"
#include "shared/stationProtocol.h"

using namespace gqdb;

static void showSignal(const char* kind, int id, const QString& name, int line, const QString& description)
{
    printLine(QString("    %1  %2  %3  line %4  %5").arg(kind).arg(id).arg(name, -14).arg(line).arg(description));
}

void showFrontEnd(CTcpAPI& client)
{
    printHeading("The front-end processor: its node, its lines, and their four kinds of signals");
    QByteArray bytes;

    std::vector<NodeHead> nodes;
    int result = fetch(client, commandNodeHeads, bytes);
    bool right = result == 1 && CByte2Fep::byte2NodeHeads(bytes.constData(), bytes.size(), nodes) == 1 &&
                 nodes.size() == 1 && nodes[0].word5 == 600;
    show("node heads (0x40)", result, right, "one node");

    std::vector<CommItem> lines;
    result = fetch(client, commandCommItems, bytes);
    right = result == 1 && CByte2Fep::byte2CommItems(bytes.constData(), bytes.size(), lines) == 1 &&
            lines.size() == 2 && lines[1].word1 == 502;
    show("communication entries (0x41)", result, right, "two lines");

    std::vector<YcItem> measurements;
    result = fetch(client, commandYcItems, bytes);
    right = result == 1 && CByte2Fep::byte2YcItems(bytes.constData(), bytes.size(), measurements) == 1 &&
            measurements.size() == 1 && measurements[0].coef2 == -50;
    show("measurements (0x42)", result, right, "one YcItem");

    std::vector<YxItem> states;
    result = fetch(client, commandYxItems, bytes);
    right = result == 1 && CByte2Fep::byte2YxItems(bytes.constData(), bytes.size(), states) == 1 &&
            states.size() == 1 && states[0].word2 == -1;
    show("states (0x43)", result, right, "one YxItem");

    std::vector<YdItem> meters;
    result = fetch(client, commandYdItems, bytes);
    right = result == 1 && CByte2Fep::byte2YdItems(bytes.constData(), bytes.size(), meters) == 1 &&
            meters.size() == 1 && meters[0].float1 == 0.5f;
    show("meters (0x44)", result, right, "one YdItem");

    std::vector<YbItem> integers;
    result = fetch(client, commandYbItems, bytes);
    right = result == 1 && CByte2Fep::byte2YbItems(bytes.constData(), bytes.size(), integers) == 1 &&
            integers.size() == 2 && integers[1].word1 == 2;
    show("integers (0x45)", result, right, "two YbItem");

    printLine(QString());
    for (const NodeHead& node : nodes)
        printLine(QString("    node %1  %2  %3  %4, %5")
                      .arg(node.nodeId)
                      .arg(node.text1, node.text2, node.text5, node.text6));
    for (const CommItem& line : lines)
        printLine(QString("    line %1  %2  %3  %4:%5")
                      .arg(line.commId)
                      .arg(line.text1, line.text2, line.text3)
                      .arg(line.word1));
    for (const YcItem& item : measurements)
        showSignal("yc", item.itemId, item.text1, item.word1,
                   QString("%1, %2 %3 per step").arg(item.text2).arg(item.coef1).arg(item.text3));
    for (const YxItem& item : states)
        showSignal("yx", item.itemId, item.text1, item.word1, item.text2);
    for (const YdItem& item : meters)
        showSignal("yd", item.itemId, item.text1, item.word1,
                   QString("%1, %2 %3 per pulse").arg(item.text2).arg(item.float1).arg(item.text3));
    for (const YbItem& item : integers)
        showSignal("yb", item.itemId, item.text1, item.word1, item.text2);
}
