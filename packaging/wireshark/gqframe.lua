-- Wireshark dissector of the frame that clients of gqLib and their servers exchange over TCP and UDP. It claims no port
-- by itself: select it with Decode As, or enter the server's ports in its preferences. docs/formats/frame.md describes
-- the bytes, docs/guide/wireshark.md how to use the dissector.
--
-- The payload of the ready-made commands and of error frames has a known form. The payload of any other command is
-- defined by a program and its server: it is read in the form that a preference names, otherwise in each form that it
-- fits exactly, marked as a candidate.

local gqframe = Proto("gqframe", "gqLib Frame")

-- --- Preferences -------------------------------------------------------------------------------------------------

gqframe.prefs.ports = Pref.range("Ports of servers", "", "TCP and UDP ports, such as 5000,5002-5004", 65535)
gqframe.prefs.request_forms = Pref.string("Forms of requests", "",
    "Forms by command, such as 0x20=int, 33=ints, *=int for all others. Forms: int, intPair, ints, bytes, strings")
gqframe.prefs.reply_forms = Pref.string("Forms of replies", "", "Forms by command, such as 0x20=ints, 0x21=bytes")
gqframe.prefs.largest_payload = Pref.uint("Largest payload", 16777216,
    "In bytes. If a frame announces more, its start byte is taken for a false one")

-- --- Fields ------------------------------------------------------------------------------------------------------

local commandNames = { [1] = "systemState", [2] = "systemTime", [3] = "clear", [5] = "setTime", [6] = "setState" }
local errorCommand = 0xff

local field = {
    direction = ProtoField.string("gqframe.direction", "Direction"),
    start = ProtoField.uint8("gqframe.start", "Start", base.HEX),
    length = ProtoField.uint32("gqframe.length", "Length of payload"),
    sequence = ProtoField.uint16("gqframe.sequence", "Sequence"),
    arg2 = ProtoField.uint8("gqframe.arg2", "arg2"),
    arg1 = ProtoField.uint8("gqframe.arg1", "arg1"),
    command = ProtoField.uint8("gqframe.command", "Command"),
    name = ProtoField.string("gqframe.name", "Name"),
    payload = ProtoField.bytes("gqframe.payload", "Payload"),
    check = ProtoField.bytes("gqframe.check", "Checksum, ignored by clients"),
    ending = ProtoField.uint8("gqframe.end", "End", base.HEX),
    header = ProtoField.bytes("gqframe.header", "Part of a header"),
    garbage = ProtoField.bytes("gqframe.garbage", "Bytes before a start byte"),

    form = ProtoField.string("gqframe.form", "Form"),
    candidate = ProtoField.string("gqframe.candidate", "Candidate form"),
    int = ProtoField.int32("gqframe.int", "Integer"),
    count = ProtoField.uint32("gqframe.count", "Count"),
    bytes = ProtoField.bytes("gqframe.bytes", "Bytes"),
    text = ProtoField.string("gqframe.text", "Text", base.UNICODE),
    itemSize = ProtoField.uint16("gqframe.item_size", "Size of the item"),
    textSize = ProtoField.uint16("gqframe.text_size", "Size of the text"),
    code = ProtoField.int32("gqframe.code", "Error code"),
    padding = ProtoField.bytes("gqframe.padding", "Padding"),
    rest = ProtoField.bytes("gqframe.rest", "Bytes after the form, ignored"),

    requestIn = ProtoField.framenum("gqframe.request_in", "Request in", base.NONE, frametype.REQUEST),
    replyIn = ProtoField.framenum("gqframe.reply_in", "Reply in", base.NONE, frametype.RESPONSE),
    replyTime = ProtoField.relative_time("gqframe.reply_time", "Time since the request"),
}

local note = {
    wrongEnd = ProtoExpert.new("gqframe.wrong_end", "The last byte is not 0x16: a client discards the frame",
        expert.group.MALFORMED, expert.severity.ERROR),
    impossibleLength = ProtoExpert.new("gqframe.impossible_length", "No frame has this length",
        expert.group.MALFORMED, expert.severity.ERROR),
    largeLength = ProtoExpert.new("gqframe.large_length", "Longer than the largest payload in the preferences",
        expert.group.MALFORMED, expert.severity.WARN),
    cut = ProtoExpert.new("gqframe.cut", "The bytes end within the frame",
        expert.group.MALFORMED, expert.severity.WARN),
    garbage = ProtoExpert.new("gqframe.garbage_note", "A client skips these bytes",
        expert.group.MALFORMED, expert.severity.WARN),
    shortForm = ProtoExpert.new("gqframe.short_form", "The payload is shorter than its form",
        expert.group.MALFORMED, expert.severity.ERROR),
    errorFrame = ProtoExpert.new("gqframe.error_frame", "Error frame",
        expert.group.RESPONSE_CODE, expert.severity.NOTE),
    padding = ProtoExpert.new("gqframe.padding_note", "Over UDP a frame is padded to 64 bytes",
        expert.group.PROTOCOL, expert.severity.CHAT),
    badPreference = ProtoExpert.new("gqframe.bad_preference", "Preference not understood",
        expert.group.UNDECODED, expert.severity.WARN),
}

gqframe.fields = field
gqframe.experts = note

-- --- Payload forms -----------------------------------------------------------------------------------------------

-- size(payload) returns the number of bytes of the form, or nil if the payload is too short for it; show(payload, tree)
-- adds its fields. If `showsPart` is set, `show` accepts a payload that is too short but has at least 4 bytes.

local mostShown = 1000 -- elements of a list

local function uintAt(payload, offset) return payload:range(offset, 4):le_uint() end

local function addInt(payload, offset, tree) tree:add_le(field.int, payload:range(offset, 4)) end

local function addCount(payload, tree)
    local count = uintAt(payload, 0)
    local item = tree:add_le(field.count, payload:range(0, 4))
    if count > mostShown then item:append_text(string.format(", at most %d are shown", mostShown)) end
    return count
end

local function fixedSize(size)
    return function(payload) return payload:len() >= size and size or nil end
end

local function countedSize(elementSize)
    return function(payload)
        local size = payload:len() >= 4 and 4 + uintAt(payload, 0) * elementSize
        return size and size <= payload:len() and size or nil
    end
end

-- Calls each(offset, itemSize, textSize) for the items of a string list up to the first incomplete one; textSize is nil
-- if the item contains no complete text. Returns the size of the list, or nil if the payload is too short.
local function walkTexts(payload, each)
    local count = payload:len() >= 4 and uintAt(payload, 0)
    if not count or 4 + 2 * count > payload:len() then return nil end
    local offset = 4
    for following = count - 1, 0, -1 do
        local itemSize = payload:range(offset, 2):le_uint()
        if offset + 2 + itemSize + 2 * following > payload:len() then return nil end
        local textSize = itemSize >= 2 and payload:range(offset + 2, 2):le_uint()
        each(offset, itemSize, textSize and textSize + 2 <= itemSize and textSize or nil)
        offset = offset + 2 + itemSize
    end
    return offset
end

local function showTexts(payload, tree)
    addCount(payload, tree)
    local shown = 0
    walkTexts(payload, function(offset, itemSize, textSize)
        shown = shown + 1
        if shown > mostShown then return end
        local text = (textSize or 0) > 0 and payload:range(offset + 4, textSize):string(ENC_UTF_8) or ""
        local item = tree:add(field.text, payload:range(offset, 2 + itemSize), text) -- up to its first zero byte
        item:add_le(field.itemSize, payload:range(offset, 2))
        if itemSize >= 2 then item:add_le(field.textSize, payload:range(offset + 2, 2)) end
        if not textSize then item:append_text(" (no complete text in the item: read as empty)") end
    end)
end

local forms = {
    int = {
        size = fixedSize(4),
        show = function(payload, tree) addInt(payload, 0, tree) end,
    },
    intPair = { -- without a count
        size = fixedSize(8),
        show = function(payload, tree)
            addInt(payload, 0, tree)
            addInt(payload, 4, tree)
        end,
    },
    ints = {
        size = countedSize(4),
        show = function(payload, tree)
            local count = addCount(payload, tree)
            for i = 1, math.min(count, mostShown) do addInt(payload, 4 * i, tree) end
        end,
    },
    bytes = {
        size = countedSize(1),
        show = function(payload, tree)
            local count = addCount(payload, tree)
            if count > 0 then tree:add(field.bytes, payload:range(4, count)) end
        end,
    },
    strings = {
        size = function(payload) return walkTexts(payload, function() end) end,
        show = showTexts,
        showsPart = true,
    },
    error = {
        size = fixedSize(4),
        show = function(payload, tree) tree:add_le(field.code, payload:range(0, 4)) end,
    },
}

local candidates = { "int", "ints", "bytes", "strings" }

-- The bytes after the form. Over UDP a short frame is padded with zeros to 64 bytes; they count as payload.
local function isPadding(payload, size, isDatagram)
    return isDatagram and payload:len() == 51 and not payload:raw(size):find("[^%z]")
end

local function addRest(payload, size, isDatagram, tree)
    if size == payload:len() then return end
    local rest = payload:range(size)
    if isPadding(payload, size, isDatagram) then
        tree:add(field.padding, rest):add_proto_expert_info(note.padding)
    else
        tree:add(field.rest, rest)
    end
end

local function addForm(name, payload, isDatagram, tree)
    local form = forms[name]
    local size = payload and form.size(payload)
    local item = payload and tree:add(field.form, payload, name) or tree:add(field.form, name)
    if not size then item:add_proto_expert_info(note.shortForm) end
    if size or form.showsPart and payload and payload:len() >= 4 then form.show(payload, item) end
    if size then addRest(payload, size, isDatagram, item) end
    return item
end

local function addCandidates(payload, isDatagram, tree)
    for _, name in ipairs(candidates) do
        local size = forms[name].size(payload)
        if size and (size == payload:len() or isPadding(payload, size, isDatagram)) then
            local item = tree:add(field.candidate, payload, name)
            forms[name].show(payload, item)
            addRest(payload, size, isDatagram, item)
        end
    end
end

-- --- Forms by command --------------------------------------------------------------------------------------------

local chosen = { request = {}, reply = {} } -- from the preferences, by command or "*"
local notUnderstood = {}

local function chooseForms(direction, text)
    chosen[direction] = {}
    for entry in text:gmatch("[^,%s]+") do
        local key, form = entry:match("^([^=]+)=(%a+)$")
        local command = key == "*" and key or tonumber(key or "")
        if command and forms[form] and form ~= "error" then
            chosen[direction][command] = form
        else
            notUnderstood[#notUnderstood + 1] = entry
        end
    end
end

-- Returns the form of a ready-made command or an error frame, nil for all others.
local function knownForm(command, direction, isDatagram)
    if direction == "reply" and command == errorCommand then return "error" end
    if not commandNames[command] or not direction then return nil end
    if direction == "request" and commandNames[command] == "setTime" then
        return isDatagram and "ints" or "intPair" -- the two clients differ
    end
    return "int"
end

-- Codes that a client returns to its program although they also have another meaning there.
local codeMeanings = {
    [1] = "a client reads it as success",
    [0] = "a client reads it as a time-out or a bad frame",
    [-1] = "a client reads it as a dead link",
    [-2] = "a client reads it as an error frame without a code",
    [-5] = "a client reads it as a payload that is too short",
}

local function addErrorCode(payload, isDatagram, tree)
    local item = addForm("error", payload, isDatagram, tree)
    local code = payload and payload:len() >= 4 and payload:range(0, 4):le_int()
    local text = code and string.format("%d, %s", code, codeMeanings[code] or "the server's own code")
        or "too short for a code: a client reads -2"
    item:append_text(": " .. text)
    item:add_proto_expert_info(note.errorFrame, "Error frame: " .. text)
    return "error " .. (code or "without a code")
end

-- --- Requests and replies ----------------------------------------------------------------------------------------

-- A client has one request at a time: all frames from the server belong to the reply to the latest request.
-- These tables are filled in the first pass over the packets.
local latestRequest = {} -- by conversation: packet number and time
local requestOf = {}     -- by packet with a reply: the request's packet number and time
local replyOf = {}       -- by packet with a request: packet number of its first reply
local isUnasked = {}     -- by packet: frames from the server before any request

local tcpCompleteness = Field.new("tcp.completeness")

-- In the first pass only the fields of `pinfo` are available.
local function pair(pinfo, direction, isDatagram)
    if pinfo.visited or not direction then return end
    local client = string.format("%s %d", pinfo.src, pinfo.src_port)
    local server = string.format("%s %d", pinfo.dst, pinfo.dst_port)
    if direction == "reply" then client, server = server, client end
    local conversation = string.format("%s %s %s", client, server, isDatagram)
    if direction == "request" then
        latestRequest[conversation] = { number = pinfo.number, time = pinfo.rel_ts }
        return
    end
    local request = latestRequest[conversation]
    if request then
        requestOf[pinfo.number] = request
        replyOf[request.number] = replyOf[request.number] or pinfo.number
    else
        isUnasked[pinfo.number] = true
    end
end

-- Returns true if the frame is a greeting, which only a capture with the start of the connection shows.
local function isGreeting(pinfo)
    local completeness = isUnasked[pinfo.number] and tcpCompleteness()
    return completeness and completeness.value % 4 > 0 -- SYN or SYN and ACK
end

local function addPair(pinfo, direction, tree)
    local request = direction == "reply" and requestOf[pinfo.number]
    if request then
        tree:add(field.requestIn, request.number):set_generated()
        local time = pinfo.rel_ts - request.time
        local seconds = math.floor(time)
        tree:add(field.replyTime, NSTime(seconds, math.floor((time - seconds) * 1e9 + 0.5))):set_generated()
    elseif direction == "request" and replyOf[pinfo.number] then
        tree:add(field.replyIn, replyOf[pinfo.number]):set_generated()
    end
end

-- --- The frame ---------------------------------------------------------------------------------------------------

local headerSize, tailSize = 10, 3
local startByte, endByte = "\x68", 0x16
local impossibleLength = 0x80000000 - 13 -- a frame stays below 2 GiB, with header and tail

local function addHeader(header, direction, tree)
    tree:add(field.start, header:range(0, 1))
    tree:add_le(field.length, header:range(1, 4))
    tree:add_le(field.sequence, header:range(5, 2))
    tree:add(field.arg2, header:range(7, 1))
    tree:add(field.arg1, header:range(8, 1))
    tree:add(field.command, header:range(9, 1))
    if direction then tree:add(field.direction, direction):set_generated() end
end

-- Adds name and form of a complete frame's payload, nil if it is empty. Returns a text for the summary.
local function addContent(pinfo, command, payload, direction, isDatagram, tree)
    local isError = direction == "reply" and command == errorCommand
    local greets = isGreeting(pinfo)
    local name = greets and "greeting" or commandNames[command]
    if name and not isError then tree:add(field.name, name):set_generated() end
    if isError then return addErrorCode(payload, isDatagram, tree) end

    local form = greets and "int" or knownForm(command, direction, isDatagram)
        or direction and (chosen[direction][command] or chosen[direction]["*"])
    if form then
        addForm(form, payload, isDatagram, tree)
    elseif payload then
        addCandidates(payload, isDatagram, tree)
    end
    return (name or "command " .. command) .. (direction and not greets and " " .. direction or "")
end

local function addFrame(tvb, offset, length, pinfo, direction, isDatagram, root)
    local left = tvb:len() - offset
    local size = headerSize + length + tailSize
    local tree = root:add(gqframe, tvb:range(offset, math.min(size, left)))
    addHeader(tvb:range(offset, headerSize), direction, tree)
    for _, entry in ipairs(notUnderstood) do
        tree:add_proto_expert_info(note.badPreference, "Preference not understood: " .. entry)
    end
    local command = tvb:range(offset + 9, 1):uint()
    local tail = offset + headerSize + length
    local payloadSize = math.min(length, left - headerSize)
    local payload = payloadSize > 0 and tvb:range(offset + headerSize, payloadSize) or nil
    if payload then tree:add(field.payload, payload) end
    if tail < tvb:len() then tree:add(field.check, tvb:range(tail, math.min(2, tvb:len() - tail))) end

    local summary
    if size > left then
        tree:add_proto_expert_info(note.cut, string.format("Of the frame %d bytes are missing", size - left))
        summary = "frame cut short"
    else
        local ending = tree:add(field.ending, tvb:range(tail + 2, 1))
        if tvb:range(tail + 2, 1):uint() ~= endByte then
            ending:add_proto_expert_info(note.wrongEnd)
            summary = "frame with a wrong end"
        else
            pair(pinfo, direction, isDatagram)
            summary = addContent(pinfo, command, payload, direction, isDatagram, tree)
            addPair(pinfo, direction, tree)
        end
    end
    tree:append_text(", " .. summary)
    return summary
end

-- --- Streams and datagrams ---------------------------------------------------------------------------------------

local function directionOf(pinfo)
    if pinfo.src_port == pinfo.dst_port then return nil end
    if pinfo.match == pinfo.dst_port then return "request" end
    if pinfo.match == pinfo.src_port then return "reply" end
    return nil
end

local function addGarbage(tvb, from, to, root)
    if from == to then return end
    local tree = root:add(gqframe, tvb:range(from, to - from))
    tree:append_text(", bytes before a start byte")
    tree:add(field.garbage, tvb:range(from, to - from)):add_proto_expert_info(note.garbage)
end

local function addFalseStart(tvb, offset, length, root)
    local tree = root:add(gqframe, tvb:range(offset, 5))
    tree:append_text(", false start byte")
    tree:add_le(field.length, tvb:range(offset + 1, 4))
        :add_proto_expert_info(length >= impossibleLength and note.impossibleLength or note.largeLength)
end

local function addCutHeader(header, root)
    local tree = root:add(gqframe, header)
    tree:append_text(", header cut short")
    tree:add(field.header, header):add_proto_expert_info(note.cut)
end

function gqframe.dissector(tvb, pinfo, root)
    local isDatagram = pinfo.port_type == 3 -- UDP
    local direction = directionOf(pinfo)
    local bytes = tvb:raw()
    local canWait = not isDatagram and pinfo.can_desegment > 0
    local summaries = {}
    local offset = 0

    pinfo.cols.protocol = "gqframe"
    while offset < tvb:len() do
        local start = bytes:find(startByte, offset + 1, true)
        start = start and start - 1 or tvb:len()
        addGarbage(tvb, offset, start, root)
        local left = tvb:len() - start
        if left == 0 then break end

        local length = left >= 5 and tvb:range(start + 1, 4):le_uint() or 0
        local size = headerSize + length + tailSize
        if length >= impossibleLength or length > gqframe.prefs.largest_payload then
            addFalseStart(tvb, start, length, root)
            offset = start + 1
        elseif size > left and canWait then
            pinfo.desegment_offset = start
            pinfo.desegment_len = left < headerSize and DESEGMENT_ONE_MORE_SEGMENT
                or math.min(size - left, DESEGMENT_ONE_MORE_SEGMENT)
            break
        elseif left < headerSize then
            addCutHeader(tvb:range(start, left), root)
            break
        else
            summaries[#summaries + 1] = addFrame(tvb, start, length, pinfo, direction, isDatagram, root)
            offset = start + size
        end
    end
    if #summaries > 0 then pinfo.cols.info = table.concat(summaries, ", ") end
    return tvb:len()
end

function gqframe.init()
    latestRequest, requestOf, replyOf, isUnasked = {}, {}, {}, {}
end

-- --- Registration ------------------------------------------------------------------------------------------------

local tables = { DissectorTable.get("tcp.port"), DissectorTable.get("udp.port") }
local registeredPorts = ""

for _, ports in ipairs(tables) do ports:add_for_decode_as(gqframe) end

function gqframe.prefs_changed()
    notUnderstood = {}
    chooseForms("request", gqframe.prefs.request_forms)
    chooseForms("reply", gqframe.prefs.reply_forms)
    if gqframe.prefs.ports == registeredPorts then return end
    for _, ports in ipairs(tables) do
        if registeredPorts ~= "" then ports:remove(registeredPorts, gqframe) end
        if gqframe.prefs.ports ~= "" then ports:add(gqframe.prefs.ports, gqframe) end
    end
    registeredPorts = gqframe.prefs.ports
end
