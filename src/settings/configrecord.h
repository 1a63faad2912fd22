#pragma once

#include <cstdint>
#include <optional>

#include <QByteArray>
#include <QString>

#include "common/checked.h"

namespace kv {

// The one record of kestrvan.cfg: 10310 bytes, little-endian, no header; its length is its only
// identity. Bytes the program never reads (the reserved runs and texts) are carried as they were
// read, so a file from another version passes through a run unchanged.
class ConfigRecord
{
public:
    static constexpr qsizetype kSize = 10310;
    static constexpr qsizetype kTextWidth = 1024;

    // Unsigned 8-bit fields.
    static constexpr qsizetype kTab = 0;        // 1 "Mp3", 2 "Ogg", 3 "Mpc"
    static constexpr qsizetype kLanguage = 1;   // 0 English, anything else Russian
    static constexpr qsizetype kMp3Mode = 2;
    static constexpr qsizetype kMp3Preset = 3;
    static constexpr qsizetype kMp3Abr = 4;     // kbps - 128
    static constexpr qsizetype kMp3Cbr = 5;
    static constexpr qsizetype kOggMode = 6;
    static constexpr qsizetype kOggQuality = 7; // tenths + 10
    static constexpr qsizetype kOggAbr = 8;     // kbps - 128
    static constexpr qsizetype kMpcMode = 9;
    static constexpr qsizetype kMpcPreset = 10;
    static constexpr qsizetype kMpcQuality = 11; // tenths as they are
    static constexpr qsizetype kReservedA = 12;  // 38 bytes
    // Signed 16-bit fields, in pixels (twips / 15).
    static constexpr qsizetype kWindowLeft = 50;
    static constexpr qsizetype kWindowTop = 52;
    static constexpr qsizetype kWindowWidth = 54;
    static constexpr qsizetype kWindowHeight = 56;
    static constexpr qsizetype kReservedB = 58; // 12 bytes
    // Texts of kTextWidth Windows-1251 bytes each.
    static constexpr qsizetype kFolder = 70;
    static constexpr qsizetype kReservedText1 = 1094;
    static constexpr qsizetype kReservedText2 = 2118;
    static constexpr qsizetype kMp3CommandLine = 3142;
    static constexpr qsizetype kOggCommandLine = 4166;
    static constexpr qsizetype kMpcCommandLine = 5190;
    static constexpr qsizetype kReservedTexts6To9 = 6214; // four texts

    // All zero, as the record stands before anything is loaded.
    ConfigRecord();
    // Nothing unless the bytes are exactly one record.
    static std::optional<ConfigRecord> fromBytes(const QByteArray &bytes);

    const QByteArray &bytes() const { return m_bytes; }

    std::uint8_t byte(qsizetype offset) const;
    void setByte(qsizetype offset, Byte value);
    std::int16_t int16(qsizetype offset) const;
    void setInt16(qsizetype offset, Int16 value);
    // The whole field, padding and zero bytes included.
    QString text(qsizetype offset) const;
    // Blank-padded, or cut at kTextWidth characters; what the code page lacks becomes "?".
    void setText(qsizetype offset, const QString &text);

private:
    QByteArray m_bytes;
};

} // namespace kv
