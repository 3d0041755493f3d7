#pragma once

#include "platform/pdf/EngineMessages.h"
#include "platform/pdf/PageText.h"

#include <optional>
#include <vector>

// The messages about what is read on pages, with the rules of EngineMessages.h.

namespace inkory
{

namespace engineBus
{

/// ReadPageMessage; PageText.
inline constexpr const char *readText = "ReadText";
/// ReadPageMessage; links.
inline constexpr const char *readLinks = "ReadLinks";
/// ReadOutlineMessage; outline.
inline constexpr const char *readOutline = "ReadOutline";
/// FindMessage; FindReply.
inline constexpr const char *find = "Find";

/// What the longest of these answers takes, with room for the bytes that are counted twice when they arrive.
inline constexpr qint64 longestReadAnswer = 4LL << 20;

} // namespace engineBus

struct ReadPageMessage
{
    quint32 job = 0;
    int page = 0;
};

struct ReadOutlineMessage
{
    quint32 job = 0;
};

struct FindMessage
{
    quint32 job = 0;
    FindRequest request;
};

bool append(sd_bus_message *message, const ReadPageMessage &read);
bool append(sd_bus_message *message, const ReadOutlineMessage &read);
bool append(sd_bus_message *message, const FindMessage &find);
bool append(sd_bus_message *message, const PageText &text);
bool append(sd_bus_message *message, const std::vector<PageLink> &links);
bool append(sd_bus_message *message, const std::vector<OutlineItem> &outline);
bool append(sd_bus_message *message, const FindReply &reply);

std::optional<ReadPageMessage> readReadPage(sd_bus_message *message);
std::optional<ReadOutlineMessage> readReadOutline(sd_bus_message *message);
std::optional<FindMessage> readFind(sd_bus_message *message);
std::optional<PageText> readPageText(sd_bus_message *message);
std::optional<std::vector<PageLink>> readPageLinks(sd_bus_message *message);
std::optional<std::vector<OutlineItem>> readOutline(sd_bus_message *message);
std::optional<FindReply> readFindReply(sd_bus_message *message);

} // namespace inkory
