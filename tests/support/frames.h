#pragma once

#include "hex.h"

// Frames of a server: start, length, sequence, arg2, arg1, command, payload, checksum, end.
inline const QByteArray greeting = "68 04000000 0000 00 00 00 01000000 0000 16"_hex;
inline const QByteArray reply7 = "68 04000000 0000 00 00 30 07000000 0000 16"_hex; // the integer 7

// Error frames by their code, and frames that clients refuse.
inline const QByteArray errorMinus7 = "68 04000000 0000 00 00 ff f9ffffff 0000 16"_hex;
inline const QByteArray error0 = "68 04000000 0000 00 00 ff 00000000 0000 16"_hex;
inline const QByteArray error1 = "68 04000000 0000 00 00 ff 01000000 0000 16"_hex;
inline const QByteArray error5 = "68 04000000 0000 00 00 ff 05000000 0000 16"_hex;
inline const QByteArray errorOfTwoBytes = "68 02000000 0000 00 00 ff f9ff 0000 16"_hex;
inline const QByteArray errorOfNoBytes = "68 00000000 0000 00 00 ff 0000 16"_hex;
inline const QByteArray wrongEnd = "68 04000000 0000 00 00 30 07000000 0000 17"_hex;
inline const QByteArray threeBytesOfPayload = "68 03000000 0000 00 00 30 070000 0000 16"_hex;
inline const QByteArray noPayload = "68 00000000 0000 00 00 30 0000 16"_hex;
