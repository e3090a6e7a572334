// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/DesktopContrast.h"
#include "platform/FileViewer.h"
#include "platform/Log.h"
#include "platform/NotificationCenter.h"
#include "platform/ProcessServices.h"
#include "platform/Queues.h"
#include "platform/RunningApplications.h"
#include "platform/ScriptRunner.h"
#include "platform/SocketStreams.h"
#include "platform/TextConverter.h"
#include "platform/Time.h"
#include "platform/UrlSession.h"
#include "platform/UserDefaults.h"

namespace spotwell
{

/// The services the program stands on. Each outlives whoever it is handed to.
struct Platform {
    const Clock& clock;
    MainQueue& mainQueue;
    SerialQueueMaker makeSerialQueue;
    UrlSessionMaker makeUrlSession;
    SocketStreams& sockets;
    NotificationCenter& notificationCenter;
    RunningApplications& runningApplications;
    ScriptRunner& scriptRunner;
    FileViewer& fileViewer;
    DesktopContrast& desktopContrast;
    UserDefaults& userDefaults;
    const TextConverter& textConverter;
    ProcessServices& process;
    Log& log;
};

} // namespace spotwell
