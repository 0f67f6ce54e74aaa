-- Gives a request the header X-Request-Id, unless the client or a load balancer gave it one.
local headers = lighty.r.req_header
if (headers["X-Request-Id"] or "") == "" then
    headers["X-Request-Id"] = string.format("%08x%08x", lighty.c.rand() & 0xffffffff, lighty.c.rand() & 0xffffffff)
end
