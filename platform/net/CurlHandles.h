#pragma once

#include "platform/base/Handle.h"

#include <curl/curl.h>

#include <memory>

namespace skyflare {

using CurlEasy = Handle<CURL, &curl_easy_cleanup>;
using CurlUrl = Handle<CURLU, &curl_url_cleanup>;
using CurlHeaders = Handle<curl_slist, &curl_slist_free_all>;
using CurlText = Handle<char, &curl_free>;
using CurlMulti = Handle<CURLM, &curl_multi_cleanup>;

} // namespace skyflare
