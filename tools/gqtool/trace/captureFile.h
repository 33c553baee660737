#pragma once

#include <QByteArray>
#include <QString>

struct pcap_dumper;

// A capture file of bare IPv4 packets, which Wireshark and tshark also open while it is being written.
class CaptureFile {
public:
    CaptureFile() = default;
    ~CaptureFile();
    CaptureFile(const CaptureFile&) = delete;
    CaptureFile& operator=(const CaptureFile&) = delete;

    // Replaces the file at `path`, or begins to write to the pipe or device there. Returns false and the reason in
    // `error` on failure, which leaves an existing file unchanged.
    bool open(const QString& path, QString& error);

    // Writes a packet with the current time at once. If writing fails, prints an error and removes the incomplete
    // packet; later packets are ignored, as they are if no file is open.
    void write(const QByteArray& packet);

    // Returns false if a packet could not be written.
    bool isGood() const { return !hasFailed; }

private:
    void fail(int error);

    QString name;
    pcap_dumper* dumper = nullptr;
    long long size = 0; // of the complete packets and the head of the file
    bool hasFailed = false;
};
