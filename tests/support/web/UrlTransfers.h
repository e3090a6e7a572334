// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/linux/web/QtUrlSession.h"
#include "tests/support/web/LoopbackHttpServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace spotwell
{

/// Opened once, by any thread, and waited for by others.
class Gate
{
public:
    void open()
    {
        const std::lock_guard lock(mutex_);
        isOpen_ = true;
        changed_.notify_all();
    }
    bool wait(std::chrono::seconds limit = std::chrono::seconds{60})
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, limit, [this] { return isOpen_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isOpen_ = false;
};

/// The results in the order they came.
class Results
{
public:
    UrlSession::CompletionHandler handler(const QString& name = {})
    {
        return [this, name](const UrlResult& result) { add(name, result); };
    }
    void add(const QString& name, const UrlResult& result)
    {
        const std::lock_guard lock(mutex_);
        names_.push_back(name);
        results_.push_back(result);
        changed_.notify_all();
    }
    std::vector<UrlResult> wait(std::size_t count)
    {
        std::unique_lock lock(mutex_);
        EXPECT_TRUE(
            changed_.wait_for(lock, std::chrono::seconds{60}, [&] { return results_.size() >= count; }));
        std::vector<UrlResult> results = results_;
        results.resize(std::max(count, results.size()));
        return results;
    }
    std::vector<QString> names()
    {
        const std::lock_guard lock(mutex_);
        return names_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<QString> names_;
    std::vector<UrlResult> results_;
};

inline UrlSessionConfiguration patient()
{
    return {UrlSessionConfiguration::CachePolicy::reloadIgnoringLocalCacheData, Seconds{60}, Seconds{60}};
}

/// The end of one transfer.
inline UrlResult get(const QString& url, const UrlSessionConfiguration& configuration = patient(),
                     const UrlSessionLimits& limits = {})
{
    Results results;
    QtUrlSession session(configuration, QStringLiteral("spotwell/1.2.3"), limits);
    session.dataTask(url, results.handler());
    return results.wait(1).front();
}

inline void expectAnswer(const UrlResult& result, int status, const QByteArray& body)
{
    EXPECT_EQ(result.error.value_or(QString()), QString());
    ASSERT_TRUE(result.response.has_value());
    EXPECT_EQ(result.response->statusCode, status);
    EXPECT_EQ(result.body.size(), body.size());
    EXPECT_TRUE(result.body == body);
}

inline void expectError(const UrlResult& result, const QString& description)
{
    EXPECT_EQ(result.error, description);
    EXPECT_FALSE(result.response.has_value());
    EXPECT_TRUE(result.body.isEmpty());
}

inline void expectSomeError(const UrlResult& result)
{
    EXPECT_NE(result.error.value_or(QString()), QString());
    EXPECT_FALSE(result.response.has_value());
    EXPECT_TRUE(result.body.isEmpty());
}

inline LoopbackHttpServer::Handler answering(const std::string& status, const std::string& body,
                                             const std::string& headers = {})
{
    return [=](LoopbackHttpServer::Connection& connection, const std::string&) {
        connection.answer(status, body, headers);
    };
}

/// RFC 1952 around what zlib makes.
inline std::string gzip(const QByteArray& data)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : data) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) != 0 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
    }
    std::string packed("\x1F\x8B\x08\0\0\0\0\0\0\xFF", 10);
    // Without the length that Qt puts in front, zlib's head of two bytes and its check sum of four.
    const QByteArray compressed = qCompress(data);
    packed += compressed.sliced(6).chopped(4).toStdString();
    for (const std::uint32_t number : {~crc, static_cast<std::uint32_t>(data.size())}) {
        for (int shift = 0; shift < 32; shift += 8)
            packed += static_cast<char>(number >> shift & 0xFF);
    }
    return packed;
}

} // namespace spotwell
