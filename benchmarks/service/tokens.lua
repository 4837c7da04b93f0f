-- Asks as many students would: each request with the token of another one. The tokens stand in a file, one a line.
local requests = {}
local place = 0

function init(arguments)
    for token in io.lines(arguments[1]) do
        requests[#requests + 1] = wrk.format("GET", arguments[2], { ["Authorization"] = "Bearer " .. token })
    end
end

function request()
    place = place % #requests + 1
    return requests[place]
end
