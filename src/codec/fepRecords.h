#pragma once

#include "gqLibExport.h"

#include <QString>

// Records of the front-end processors: plain data, which CByte2Fep converts without interpreting it. Fields are
// declared in an order that is not always that on the wire, which byte2Fep.h documents. Each starts at zero or empty
// unless it says otherwise.
namespace gqdb {

// --- Nodes and communication --------------------------------------------------------------------------------------

// The head of a node.
struct NodeHead {
    int nodeId = 0;
    QString text1;
    QString text2;
    QString text3;
    QString text4;
    char flag1 = 0;
    int word1 = 0;
    char flag2 = 0;
    char flag3 = 0;
    char flag4 = 0;
    int word2 = 0;
    int word3 = 3;
    int word4 = 10;
    int word5 = 600;
    QString text5;
    QString text6;
};

// A communication entry.
struct CommItem {
    int commId = 0;
    QString text1;
    QString text2;
    char flag1 = 0;
    QString text3;
    char flag2 = 0;
    QString text4;
    int word1 = 0;
    char flag3 = 0; // flag3 and the states are not on the wire
    unsigned int state1 = 0;
    unsigned int state2 = 0;
    unsigned int state3 = 0;
    unsigned int state4 = 0;
    QString text5;
};

// --- Telemetry items: signals. Their state fields hold the reading and are not on the wire ------------------------

// A measurement with a floating-point value and its scaling.
struct YcItem {
    char flag1 = 0;
    int itemId = 0;
    QString text1;
    QString text2;
    QString text3;
    QString text4;
    char flag2 = 0;
    int word1 = 0;
    int word2 = -1;
    char flag3 = 0;
    float coef1 = 1;
    float coef2 = 0;
    float coef3 = 0;
    float coef4 = 0;
    int word3 = 0;
    char flag4 = 0;
    char flag5 = 0;
    QString text5;
    float state1 = 0;
    unsigned int state2 = 0;
    unsigned int state3 = 0;
};

// A signal with two or a few states.
struct YxItem {
    int itemId = 0;
    QString text1;
    QString text2;
    QString text3;
    char flag1 = 0;
    int word1 = 0;
    int word2 = -1;
    char flag2 = 0;
    int word3 = 0;
    char flag3 = 0;
    char flag4 = 0;
    char flag5 = 0;
    char flag6 = 0;
    QString text4;
    char state1 = 0;
    unsigned int state2 = 0;
    unsigned int state3 = 0;
};

// An item without a reading of its own; the application defines its meaning.
struct YdItem {
    char flag1 = 0;
    int itemId = 0;
    QString text1;
    QString text2;
    QString text3;
    QString text4;
    char flag2 = 0;
    char flag3 = 0;
    int word1 = 0;
    int word2 = 0;
    char flag4 = 0;
    char flag5 = 0;
    char flag6 = 0;
    char flag7 = 0;
    float float1 = 0;
    float float2 = 0;
    int word3 = 0;
    float float3 = 0;
    float float4 = 0;
    int word4 = 0;
    int word5 = 0;
    QString text5;
};

// A signal with an integer value.
struct YbItem {
    int itemId = 0;
    QString text1;
    QString text2;
    QString text3;
    char flag1 = 0; // written, but never read
    int word1 = 0;
    int word2 = 0;
    char flag2 = 0;
    QString text4;
    unsigned int state1 = 0;
    unsigned int state2 = 0;
    unsigned int state3 = 0;
};

} // namespace gqdb
