#include "settings/configrecord.h"

#include "settings/windows1251.h"

namespace kv {

ConfigRecord::ConfigRecord() : m_bytes(kSize, '\0') {}

std::optional<ConfigRecord> ConfigRecord::fromBytes(const QByteArray &bytes)
{
    if (bytes.size() != kSize)
        return std::nullopt;
    ConfigRecord record;
    record.m_bytes = bytes;
    return record;
}

std::uint8_t ConfigRecord::byte(qsizetype offset) const
{
    return static_cast<std::uint8_t>(m_bytes.at(offset));
}

void ConfigRecord::setByte(qsizetype offset, Byte value)
{
    m_bytes[offset] = static_cast<char>(value.value());
}

std::int16_t ConfigRecord::int16(qsizetype offset) const
{
    const auto lo = static_cast<std::uint16_t>(byte(offset));
    const auto hi = static_cast<std::uint16_t>(byte(offset + 1));
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(lo | (hi << 8)));
}

void ConfigRecord::setInt16(qsizetype offset, Int16 value)
{
    const auto u = static_cast<std::uint16_t>(value.value());
    m_bytes[offset] = static_cast<char>(u & 0xFF);
    m_bytes[offset + 1] = static_cast<char>(u >> 8);
}

QString ConfigRecord::text(qsizetype offset) const
{
    return fromWindows1251(m_bytes.mid(offset, kTextWidth));
}

void ConfigRecord::setText(qsizetype offset, const QString &text)
{
    QByteArray field = toWindows1251(text).left(kTextWidth);
    field.append(QByteArray(kTextWidth - field.size(), ' '));
    m_bytes.replace(offset, kTextWidth, field);
}

} // namespace kv
