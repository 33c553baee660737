-- Wireshark dissector of the frame that clients of gqLib and their servers exchange over TCP and UDP. It claims no port
-- by itself: select it with Decode As, or enter the server's ports in its preferences. docs/formats/frame.md describes
-- the bytes, docs/guide/wireshark.md how to use the dissector.
--
-- The payload of the ready-made commands and of error frames has a known form. The payload of any other command is
-- defined by a program and its server: it is read in the form that a preference or a map of commands names, otherwise
-- in each form that it fits exactly, marked as a candidate.

local gqframe = Proto("gqframe", "gqLib Frame")

-- --- Preferences -------------------------------------------------------------------------------------------------

gqframe.prefs.ports = Pref.range("Ports of servers", "", "TCP and UDP ports, such as 5000,5002-5004", 65535)
gqframe.prefs.request_forms = Pref.string("Forms of requests", "",
    "Forms by command, such as 0x20=int, 33=ints, *=int for all others. Forms: int, intPair, ints, bytes, strings")
gqframe.prefs.reply_forms = Pref.string("Forms of replies", "", "Forms by command, such as 0x20=ints, 0x21=bytes")
gqframe.prefs.map = Pref.string("Map of commands", "",
    "A file with a line COMMAND NAME REQUEST REPLY for each command, as gqtool call --map and trace --map read it")
local encodings = { -- of those that Wireshark knows; its GB18030 includes GBK and GB2312
    { "UTF-8", ENC_UTF_8 }, { "GB18030", ENC_GB18030 }, { "EUC-KR", ENC_EUC_KR }, { "ISO-8859-1", ENC_ISO_8859_1 },
    { "ISO-8859-15", ENC_ISO_8859_15 }, { "Windows-1251", ENC_WINDOWS_1251 }, { "Windows-1252", ENC_WINDOWS_1252 },
}
local offered = {}
for number, encoding in ipairs(encodings) do offered[number] = { number, encoding[1], number } end
gqframe.prefs.encoding = Pref.enum("Encoding of texts", 1,
    "Of the texts in database records, as gqtool decode --encoding. GB18030 includes GBK and GB2312", offered, false)
local textEncoding = ENC_UTF_8
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
    command = ProtoField.uint8("gqframe.command", "Command", base.HEX),
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
    records = ProtoField.string("gqframe.records", "Records"),
    record = ProtoField.string("gqframe.record", "Record"),

    requestIn = ProtoField.framenum("gqframe.request_in", "Request in", base.NONE, frametype.REQUEST),
    replyIn = ProtoField.framenum("gqframe.reply_in", "Reply in", base.NONE, frametype.RESPONSE),
    replyTime = ProtoField.relative_time("gqframe.reply_time", "Time since the request"),
    unanswered = ProtoField.framenum("gqframe.unanswered", "Earlier request without a reply", base.NONE,
        frametype.REQUEST),
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
    lost = ProtoExpert.new("gqframe.lost", "Follows another frame in the same segment: a client ignores it",
        expert.group.SEQUENCE, expert.severity.WARN),
    unanswered = ProtoExpert.new("gqframe.unanswered_note", "A request has no reply",
        expert.group.SEQUENCE, expert.severity.WARN),
    mismatch = ProtoExpert.new("gqframe.mismatch", "Does not match its request: a client takes it for the reply",
        expert.group.SEQUENCE, expert.severity.WARN),
    padding = ProtoExpert.new("gqframe.padding_note", "Over UDP a frame is padded to 64 bytes",
        expert.group.PROTOCOL, expert.severity.CHAT),
    badPreference = ProtoExpert.new("gqframe.bad_preference", "Preference not understood",
        expert.group.UNDECODED, expert.severity.WARN),
}

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

-- --- Records ------------------------------------------------------------------------------------------------------

-- The fields of the records, in wire order. A list is named after its record, with an s.
local recordFields = {
    pointInfo = "pointId:u32 text1:text code1:u32 text2:text code2:u32",
    floatPoint = "pointId:u32 text1:text code1:u32 text2:text text3:text text4:text code2:u32 code3:u32 code4:u32 "
        .. "text5:text switch1:u8 float1:float switch2:u8 code5:u32 code6:u32 float2:float code7:u32 levels:float*8",
    intPoint = "pointId:u32 text1:text code1:u32 text2:text text3:text text4:text code2:u32 code3:u32 code4:u32 "
        .. "text5:text switch1:u8 switch2:u8 code5:u32 code6:u32 code7:u32 code8:u32 levels:i32*8",
    intPointWritten = "pointId:u32 text1:text code1:u32 text2:text text3:text text4:text code2:u32 code3:u32 "
        .. "switch0:u8 code4:u32 text5:text switch1:u8 switch2:u8 code5:u32 code6:u32 code7:u32 code8:u32 levels:i32*8",
    boolPoint = "pointId:u32 text1:text code1:u32 text2:text text3:text code2:u32 code3:u32 code4:u32 text5:text "
        .. "switch1:u8 switch2:u8 code5:u32 code6:u32 switch3:u8",
    blobPoint = "pointId:u32 text1:text code1:u32 text2:text text3:text text4:text code2:u32 code3:u32 code4:u32 "
        .. "text5:text switch1:u8 switch2:u8 code5:u32 code6:u32",
    floatRealData = "pointId:u32 value:float stamp1:u32 stamp2:u32 flag2:u8 flag1:u8",
    floatData = "value:float stamp1:u32 stamp2:u32 flag2:u8 flag1:u8",
    intRealData = "pointId:u32 value:i32 stamp1:u32 stamp2:u32 flag1:u8 flag2:u8",
    intData = "value:i32 stamp1:u32 stamp2:u32 flag1:u8 flag2:u8",
    boolRealData = "pointId:u32 value:u8 stamp1:u32 stamp2:u32 flag1:u8",
    boolData = "value:u8 stamp1:u32 stamp2:u32 flag1:u8",
    pointRealData = "pointKind:u8 pointId:u32 value:double intValue:u32 stamp1:u32 stamp2:u32 flag1:u8 flag2:u8",
    blobDataInfo = "pointId:u32 stamp1:u32 stamp2:u32 word4:u32 flag1:u8 flag2:u8",
    blobRealData = "pointId:u32 stamp1:u32 stamp2:u32 flag1:u8 flag2:u8 bytes:blob",
    blobData = "stamp1:u32 stamp2:u32 flag1:u8 flag2:u8 bytes:blob",
    hisQuery = "pointId:u32 word1:u32 word2:u32 word3:u32 word4:u32 word5:u32 word6:u32",
    oneSecQuery = "pointId:u32 word1:u32 word2:u32 word3:u32 word4:u32 text1:text",
    eventInfo = "word1:u32 word2:u32 word3:u32 word4:u32 switch1:u8 switch2:u8 word5:u32 value:double word6:u32 "
        .. "word7:u32 word8:u32 word9:u32 word10:u32 switch3:u8 word13:u32 text1:text text2:text",
    eventState = "word1:u32 switch1:u8 word2:u32 word3:u32 word4:u32",
    variant = "kind:u8 :variant",
    variantBlob = "kind:u8 :variantBlob",
    property = "word1:i32 word2:i32 formatText:text valueText:text value:record=variant",
    propertyBlob = "word1:i32 word2:i32 formatText:slot valueText:slot value:record=variantBlob",
    object = "skipped:u8 word1:i32 word2:i32 word3:i32 word4:i32 text1:text text2:text text3:text "
        .. "properties:list=property",
    objectBlob = "skipped:u8 word1:i32 word2:i32 word3:i32 word4:i32 text1:slot text2:slot text3:slot "
        .. "properties:list=propertyBlob",
    nodeHead = "nodeId:i32 text1:text text2:text text3:text text4:text word1:i32 flag1:u8 flag2:u8 flag3:u8 flag4:u8 "
        .. "word2:i32 word3:i32 word4:i32 word5:i32 text5:text text6:text",
    commItem = "commId:i32 text1:text text2:text text3:text flag1:u8 flag2:u8 text4:text word1:i32 text5:text",
    ycItem = "flag1:u8 itemId:i32 text1:text text2:text text3:text text4:text flag2:u8 word1:i32 word2:i32 flag3:u8 "
        .. "coef1:float coef2:float coef3:float coef4:float word3:i32 flag4:u8 flag5:u8 text5:text",
    yxItem = "itemId:i32 text1:text text2:text text3:text flag1:u8 word1:i32 word2:i32 flag2:u8 word3:i32 flag3:u8 "
        .. "flag4:u8 flag5:u8 flag6:u8 text4:text",
    ydItem = "flag1:u8 itemId:i32 text1:text text2:text text3:text text4:text flag2:u8 flag3:u8 word1:i32 word2:i32 "
        .. "flag4:u8 flag5:u8 flag6:u8 flag7:u8 float1:float float2:float word3:i32 float3:float float4:float "
        .. "word4:i32 word5:i32 text5:text",
    ybItem = "itemId:i32 text1:text text2:text text3:text word1:i32 word2:i32 flag2:u8 text4:text",
    ybItemWritten = "itemId:i32 text1:text text2:text text3:text flag1:u8 word1:i32 word2:i32 flag2:u8 text4:text",
    wave = "headByte:u8 waveFlags:u8 headFill1:30 limitHigh:double limitLow:double sampleCount:u32 markCount:u32 "
        .. "headFill2:40 :samples",
}

local listNames = { intPointWritten = "intPointsWritten", ybItemWritten = "ybItemsWritten" } -- the irregular ones
local noLists = { hisQuery = true, oneSecQuery = true, variant = true, variantBlob = true, property = true,
    propertyBlob = true, object = true, objectBlob = true, wave = true }
local onlyLists = { blobData = true }

-- The library converts their texts itself, from UTF-8.
local frontEndRecords = { nodeHead = true, commItem = true, ycItem = true, yxItem = true, ydItem = true,
    ybItem = true, ybItemWritten = true }

local slotSize = 258

-- Adds a text that may be empty; `item` includes its length field. In another encoding than UTF-8, TvbRange:string would
-- cut the text to as many bytes as it has on the wire.
local function addText(tree, shown, item, text, encoding)
    if not text then
        tree:add(shown, item, "")
    elseif encoding == ENC_UTF_8 then
        tree:add(shown, item, text:string(ENC_UTF_8))
    else
        tree:add_packet_field(shown, text, encoding)
    end
end

local function textType(encoding)
    return {
        make = ProtoField.string,
        size = function(payload, offset) return 2 + payload:range(offset, 2):le_uint() end,
        least = 2,
        add = function(tree, shown, bytes)
            addText(tree, shown, bytes, bytes:len() > 2 and bytes:range(2), encoding())
        end,
    }
end

-- size(payload, offset) returns the number of bytes of a value, which may be more than the payload has. Without `add`
-- the value is a number.
local types = {
    u8 = { make = ProtoField.uint8, size = function() return 1 end },
    u32 = { make = ProtoField.uint32, size = function() return 4 end },
    i32 = { make = ProtoField.int32, size = function() return 4 end },
    float = { make = ProtoField.float, size = function() return 4 end },
    double = { make = ProtoField.double, size = function() return 8 end },
    text = textType(function() return textEncoding end),
    utf8 = textType(function() return ENC_UTF_8 end),
    slot = {
        make = ProtoField.string,
        size = function() return slotSize end,
        add = function(tree, shown, bytes)
            local size = math.min(bytes:range(0, 2):le_uint(), slotSize - 2)
            addText(tree, shown, bytes, size > 0 and bytes:range(2, size), textEncoding)
        end,
    },
    blob = {
        make = ProtoField.bytes,
        size = function(payload, offset) return 4 + uintAt(payload, offset) end,
        least = 4,
        add = function(tree, shown, bytes)
            if bytes:len() > 4 then tree:add(shown, bytes:range(4)) end
        end,
    },
}

local function typeOf(name)
    if types[name] or not tonumber(name) then return types[name] end
    local size = tonumber(name) -- of the bytes
    return { make = ProtoField.bytes, size = function() return size end }
end

-- Adds the value at `offset`. Returns the offset after it, or nil if it is incomplete.
local function addValue(payload, offset, fieldType, shown, tree)
    local left = payload:len() - offset
    if left < (fieldType.least or 1) then return nil end
    local size = fieldType.size(payload, offset)
    if size > left then return nil end
    local bytes = payload:range(offset, size)
    if fieldType.add then fieldType.add(tree, shown, bytes) else tree:add_le(shown, bytes) end
    return offset + size
end

-- A step adds one field: step(payload, offset, tree) returns the offset after it, or nil.
local steps = {} -- by record

local function addRecord(name, payload, offset, label, tree)
    local item = tree:add(field.record, payload:range(math.min(offset, payload:len() - 1)), label)
    local pos = offset
    for _, step in ipairs(steps[name]) do
        local nextPos = step(payload, pos, item)
        if not nextPos then
            item:add_proto_expert_info(note.shortForm, "The record is incomplete")
            return nil
        end
        pos = nextPos
    end
    item:set_len(math.max(pos - offset, 1))
    return pos
end

local function addRecords(name, count, payload, offset, tree)
    for i = 0, count - 1 do
        if i == mostShown then return nil end
        offset = offset < payload:len() and addRecord(name, payload, offset, string.format("[%d]", i), tree)
        if not offset then
            tree:add_proto_expert_info(note.shortForm, string.format("Record [%d] is incomplete", i))
            return nil
        end
    end
    return offset
end

local variantTypes = { -- by kind
    [0] = { "intValue", "i32" },
    [5] = { "floatValue", "float" },
    [6] = { "doubleValue", "double" },
    [10] = { "textValue", "text" },
    [11] = { "timeValue", "u32" },
}

local function variantStep(prefix, textType)
    local shown = {}
    for kind, value in pairs(variantTypes) do
        local fieldType = types[value[2] == "text" and textType or value[2]]
        shown[kind] = { fieldType, fieldType.make(prefix .. value[1], value[1]) }
        field[prefix .. value[1]] = shown[kind][2]
    end
    return function(payload, offset, tree)
        local value = shown[payload:range(offset - 1, 1):uint()]
        if not value then return offset end
        return addValue(payload, offset, value[1], value[2], tree)
    end
end

field.mark = ProtoField.int32("gqframe.wave.marks", "marks")
field.stored = ProtoField.int32("gqframe.wave.stored", "stored")
field.sample = ProtoField.float("gqframe.wave.samples", "samples")

-- The marks and samples after the head of a wave.
local function addSamples(payload, offset, tree)
    local flags = payload:range(1, 1):uint()
    local isRaw, isQuantised = flags % 2 == 1, math.floor(flags / 2) % 2 == 1
    local high, low = payload:range(32, 8):le_float(), payload:range(40, 8):le_float()
    local marks = uintAt(payload, 52)
    if offset + 4 * marks > payload:len() then return nil end
    for i = 0, math.min(marks, mostShown) - 1 do tree:add_le(field.mark, payload:range(offset + 4 * i, 4)) end
    offset = offset + 4 * marks
    if offset == payload:len() then return offset end
    local block = payload:range(offset)
    if math.floor(flags / 4) % 2 == 1 then block = block:uncompress("Samples") end
    if not block then return nil end
    local size = (isRaw or isQuantised) and 2 or 4
    for i = 0, math.min(math.floor(block:len() / size), mostShown) - 1 do
        local bytes = block:range(i * size, size)
        if size == 4 then
            tree:add_le(field.sample, bytes)
        else
            local stored = isRaw and bytes:le_int() or bytes:le_uint()
            tree:add(field.stored, bytes, stored)
            tree:add(field.sample, bytes, isRaw and stored * high + low or stored / 65535 * (high - low) + low)
        end
    end
    return payload:len()
end

local function makeStep(record, name, typeName)
    local prefix = "gqframe." .. record .. "."
    if typeName == "variant" then return variantStep(prefix, "text") end
    if typeName == "variantBlob" then return variantStep(prefix, "slot") end
    if typeName == "samples" then return addSamples end
    local inner = typeName:match("^record=(.*)$")
    if inner then
        return function(payload, offset, tree)
            return offset < payload:len() and addRecord(inner, payload, offset, name, tree) or nil
        end
    end
    inner = typeName:match("^list=(.*)$") -- after a count of 2 bytes
    if inner then
        return function(payload, offset, tree)
            if offset + 2 > payload:len() then return nil end
            local count = payload:range(offset, 2):le_uint()
            tree:add(field.count, payload:range(offset, 2), count)
            return addRecords(inner, count, payload, offset + 2, tree)
        end
    end
    if typeName == "text" and frontEndRecords[record] then typeName = "utf8" end
    local base, times = typeName:match("^(%w+)%*(%d+)$")
    local fieldType = typeOf(base or typeName)
    local shown = fieldType.make(prefix .. name, name)
    field[prefix .. name] = shown
    return function(payload, offset, tree)
        for _ = 1, times or 1 do
            offset = addValue(payload, offset, fieldType, shown, tree)
            if not offset then return nil end
        end
        return offset
    end
end

local recordForms = {} -- show(bytes, tree) by form, as gqtool decode --list names them; returns the size or nil

for record, fields in pairs(recordFields) do
    steps[record] = {}
    for name, typeName in fields:gmatch("(%w*):(%S+)") do
        table.insert(steps[record], makeStep(record, name, typeName))
    end
    if not onlyLists[record] then
        recordForms[record] = function(bytes, tree) return addRecord(record, bytes, 0, record, tree) end
    end
    if not noLists[record] then
        recordForms[listNames[record] or record .. "s"] = function(bytes, tree)
            if bytes:len() < 4 then
                tree:add_proto_expert_info(note.shortForm)
                return nil
            end
            return addRecords(record, addCount(bytes, tree), bytes, 4, tree)
        end
    end
end

gqframe.fields = field

-- Adds the records that a byte list contains.
local function addRecordForm(name, bytes, tree)
    local item = tree:add(field.records, bytes, name)
    local size = recordForms[name](bytes, item)
    if size and size < bytes:len() then item:add(field.rest, bytes:range(size)) end
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

-- --- Map of commands ---------------------------------------------------------------------------------------------

local mapped = {} -- by command: name, request, reply, records
local requestForms = { ["-"] = true, int = true, intPair = true, ints = true, hex = true }
local replyForms = { int = true, ints = true, bytes = true, strings = true }

-- Returns the command of a line and the entry, nil if the line is empty, or nil and what is wrong.
local function mapEntry(line)
    local words = {}
    for word in line:gsub("#.*", ""):gmatch("%S+") do words[#words + 1] = word end
    if #words == 0 then return nil end
    if #words ~= 4 then return nil, string.format("must be COMMAND NAME REQUEST REPLY, got %d words", #words) end
    local text, name, request, reply = words[1], words[2], words[3], words[4]
    local isNumber = text:match("^%d+$") or text:match("^0[xX]%x+$")
    local command = isNumber and tonumber(text)
    if not command or command >= errorCommand then
        return nil, string.format("COMMAND must be an integer from 0 to 254, got '%s'", text)
    end
    if not name:match("^%a[%w_.-]*$") then
        return nil, string.format("NAME must be a letter followed by letters, digits, '_', '.' or '-', got '%s'", name)
    end
    if not requestForms[request] then
        return nil, string.format("REQUEST must be -, int, intPair, ints or hex, got '%s'", request)
    end
    local form, records = reply:match("^(%a+):?(.*)$")
    if reply:find(":") and form == "bytes" and not recordForms[records] then
        return nil, string.format("REPLY has no form '%s'; gqtool decode --list prints the forms", records)
    end
    if not replyForms[form] or (reply:find(":") and form ~= "bytes") then
        return nil, string.format("REPLY must be int, ints, bytes, strings or bytes:FORM, got '%s'", reply)
    end
    return command, { name = name, request = request, reply = form, records = records ~= "" and records or nil }
end

local function readMap(path)
    mapped = {}
    if path == "" then return end
    local file, problem = io.open(path, "r")
    if not file then
        notUnderstood[#notUnderstood + 1] = problem
        return
    end
    local lineOf, number = {}, 0
    for line in file:lines() do
        number = number + 1
        local command, entry = mapEntry(number == 1 and line:gsub("^\239\187\191", "") or line)
        local wrong = not command and entry
        if command and lineOf[command] then
            wrong = string.format("COMMAND 0x%02x is also in line %d", command, lineOf[command])
        elseif command and lineOf[entry.name] then
            wrong = string.format("NAME %s is also in line %d", entry.name, lineOf[entry.name])
        end
        if wrong then
            notUnderstood[#notUnderstood + 1] = string.format("%s:%d: %s", path, number, wrong)
        elseif command then
            mapped[command], lineOf[command], lineOf[entry.name] = entry, number, number
        end
    end
    file:close()
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
local latestRequest = {} -- by conversation: packet number, time, command and sequence
local requestOf = {}     -- by packet with a reply: the same of its request
local replyOf = {}       -- by packet with a request: packet number of its first reply
local isUnasked = {}     -- by packet: frames from the server before any request
local unanswered = {}    -- by packet with a request: packet number of the preceding request, if that got no reply
local lastSequence = {}  -- by conversation: that of the server's previous frame
local isMismatch = {}    -- by frame from the server: it does not match its request

local tcpCompleteness = Field.new("tcp.completeness")

local function ends(pinfo)
    return string.format("%s %d", pinfo.src, pinfo.src_port), string.format("%s %d", pinfo.dst, pinfo.dst_port)
end

local function conversationOf(client, server, isDatagram)
    return string.format("%s %s %s", client, server, isDatagram)
end

-- Returns the packet number of the latest request if it got no reply before the current packet.
local function missedReply(pinfo, conversation)
    local request = latestRequest[conversation]
    return request and not replyOf[request.number] and request.number < pinfo.number and request.number or nil
end

-- Servers return the sequence of the request, return 0, or count their own frames.
local function matches(request, command, sequence, last)
    local isOther = command ~= request.command and command ~= errorCommand
    local isCounted = last and sequence == (last + 1) % 0x10000
    return not isOther and (sequence == request.sequence or sequence == 0 or isCounted)
end

-- In the first pass only the fields of `pinfo` are available.
local function pair(pinfo, direction, isDatagram, command, sequence, key)
    if pinfo.visited or not direction then return end
    local client, server = ends(pinfo)
    if direction == "reply" then client, server = server, client end
    local conversation = conversationOf(client, server, isDatagram)
    if direction == "request" then
        unanswered[pinfo.number] = missedReply(pinfo, conversation)
        latestRequest[conversation] = { number = pinfo.number, time = pinfo.rel_ts, command = command,
            sequence = sequence }
        return
    end
    local request, last = latestRequest[conversation], lastSequence[conversation]
    lastSequence[conversation] = sequence
    if request then
        requestOf[pinfo.number] = request
        replyOf[request.number] = replyOf[request.number] or pinfo.number
        isMismatch[key] = not matches(request, command, sequence, last)
    else
        isUnasked[pinfo.number] = true
    end
end

-- Returns true if the frame is a greeting, which only a capture with the start of the connection shows.
local function isGreeting(pinfo)
    local completeness = isUnasked[pinfo.number] and tcpCompleteness()
    return completeness and completeness.value % 4 > 0 -- SYN or SYN and ACK
end

local function addUnanswered(number, tree)
    tree:add(field.unanswered, number):set_generated()
        :add_proto_expert_info(note.unanswered, string.format("The request in packet %d has no reply", number))
end

local function addMismatch(request, tree)
    tree:add_proto_expert_info(note.mismatch, string.format(
        "Does not match its request, command 0x%02x with sequence %d: a client takes it for the reply",
        request.command, request.sequence))
end

-- Returns true if the frame is a reply that does not match its request.
local function addPair(pinfo, direction, key, tree)
    local missed = direction == "request" and unanswered[pinfo.number]
    if missed then addUnanswered(missed, tree) end
    local request = direction == "reply" and requestOf[pinfo.number]
    if request then
        tree:add(field.requestIn, request.number):set_generated()
        local time = pinfo.rel_ts - request.time
        local seconds = math.floor(time)
        tree:add(field.replyTime, NSTime(seconds, math.floor((time - seconds) * 1e9 + 0.5))):set_generated()
        if isMismatch[key] then addMismatch(request, tree) end
        return isMismatch[key]
    elseif direction == "request" and replyOf[pinfo.number] then
        tree:add(field.replyIn, replyOf[pinfo.number]):set_generated()
    end
end

-- --- Frames that a client loses ------------------------------------------------------------------------------------

-- A client takes one frame from what it reads and ignores the rest. A segment is what it reads at once, as far as a
-- capture shows that.
local flows = {}  -- by flow, in the first pass: where its latest frame ended, and whether a lost one is incomplete
local isLost = {} -- by packet, size of the bytes and offset in them

local function flowOf(pinfo)
    return table.concat({ ends(pinfo) }, " ")
end

local function frameKey(pinfo, tvb, offset)
    return string.format("%d %d %d", pinfo.number, tvb:len(), offset)
end

-- Called for each whole frame from a server, and for an incomplete one that further segments complete.
local function noteFrame(pinfo, tvb, offset, isWhole)
    if pinfo.visited then return end
    local flow = flows[flowOf(pinfo)] or {}
    flows[flowOf(pinfo)] = flow
    local hasBegunBefore = offset == 0 and flow.waitedIn and flow.waitedIn < pinfo.number
    local lost
    if hasBegunBefore then lost = flow.isLost else lost = flow.endedIn == pinfo.number end
    if not isWhole then
        if not hasBegunBefore then flow.isLost = lost end
        flow.waitedIn = pinfo.number
        return
    end
    isLost[frameKey(pinfo, tvb, offset)] = lost or nil
    flow.waitedIn, flow.endedIn = nil, pinfo.number
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
    local entry = not greets and mapped[command]
    local name = greets and "greeting" or entry and entry.name or commandNames[command]
    if name and not isError then tree:add(field.name, name):set_generated() end
    if isError then return addErrorCode(payload, isDatagram, tree) end

    local form = greets and "int"
        or direction and (chosen[direction][command] or entry and entry[direction])
        or knownForm(command, direction, isDatagram)
        or direction and chosen[direction]["*"]
    if forms[form] then
        local item = addForm(form, payload, isDatagram, tree)
        local count = form == "bytes" and direction == "reply" and entry and entry.records
            and forms.bytes.size(payload) and uintAt(payload, 0)
        if count and count > 0 then addRecordForm(entry.records, payload:range(4, count), item) end
    elseif payload and form ~= "hex" then
        addCandidates(payload, isDatagram, tree)
    end
    return (name or string.format("command 0x%02x", command))
        .. (direction and not greets and " " .. direction or "")
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
            local key = frameKey(pinfo, tvb, offset)
            pair(pinfo, direction, isDatagram, command, tvb:range(offset + 5, 2):le_uint(), key)
            summary = addContent(pinfo, command, payload, direction, isDatagram, tree)
            if addPair(pinfo, direction, key, tree) then
                summary = summary .. " (does not match its request)"
            end
        end
    end
    if isLost[frameKey(pinfo, tvb, offset)] then
        tree:add_proto_expert_info(note.lost)
        summary = summary .. " (lost)"
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

-- --- Frames that a close cuts off -----------------------------------------------------------------------------------

-- While a frame is incomplete, Wireshark keeps its bytes until further segments complete it. If a connection ends
-- first, they are shown at the packet that ends it, which has no payload of its own as a rule.
local partOf = {}      -- by flow: bytes and direction of the incomplete frame
local endings = {}     -- by packet that ends a connection: incomplete frames, and the request without a reply
local lastSeen = 0     -- packet up to which the fields of TCP have been seen; `tshark -2` has none in its first pass

local tcpField = {}
for _, name in ipairs({ "stream", "seq", "len", "payload", "flags.fin", "flags.reset" }) do
    tcpField[name] = Field.new("tcp." .. name)
end

local function waitForMore(pinfo, tvb, offset, direction)
    local bytes = tvb:range(offset):bytes()
    partOf[flowOf(pinfo)] = { number = pinfo.number, bytes = { bytes }, direction = direction }
end

-- Adds the payload of a segment that the dissector was not called for.
local function extend(part, number)
    local sequence, payload = tcpField["seq"]().value, tcpField["payload"]()
    if part.number ~= number and part.sequence == sequence and payload then
        part.bytes[#part.bytes + 1] = payload.range:bytes()
    elseif part.number ~= number then
        return -- out of order, or sent again
    end
    part.sequence = sequence + tcpField["len"]().value
end

local function seeEnd(pinfo, from, to)
    local ending = { parts = {} }
    local isReset = tcpField["flags.reset"]().value
    for _, flow in ipairs({ from .. " " .. to, isReset and to .. " " .. from or nil }) do
        table.insert(ending.parts, partOf[flow])
        partOf[flow] = nil
    end
    ending.request = missedReply(pinfo, conversationOf(to, from, false)) -- a client may still wait after its own end
        or isReset and missedReply(pinfo, conversationOf(from, to, false))
    endings[pinfo.number] = ending
end

local function addCutFrame(part, pinfo, root)
    local bytes = ByteArray.new()
    for _, each in ipairs(part.bytes) do bytes:append(each) end
    local tvb = bytes:tvb("Frame cut short")
    if tvb:len() < headerSize then
        addCutHeader(tvb:range(), root)
    else
        addFrame(tvb, 0, tvb:range(1, 4):le_uint(), pinfo, part.direction, false, root)
    end
    pinfo.cols.info:append(", frame cut short")
end

local closing = Proto("gqframe_closing", "gqLib Frame, end of a connection")

-- Called after the dissectors of every packet.
function closing.dissector(_, pinfo, root)
    if pinfo.port_type ~= 2 then return end -- TCP
    if pinfo.number > lastSeen and tcpField["stream"]() then
        lastSeen = pinfo.number
        local from, to = ends(pinfo)
        local part = partOf[from .. " " .. to]
        if part then extend(part, pinfo.number) end
        if tcpField["flags.fin"]().value or tcpField["flags.reset"]().value then seeEnd(pinfo, from, to) end
    end
    local ending = endings[pinfo.number]
    if not ending then return end
    for _, part in ipairs(ending.parts) do addCutFrame(part, pinfo, root) end
    if ending.request then
        local tree = root:add(gqframe)
        tree:append_text(", end of the connection")
        addUnanswered(ending.request, tree)
    end
end

local firstPacket -- with frames

-- Shows in the list of packets that a preference is wrong, in the first line.
local function addPreferenceFault(pinfo)
    firstPacket = firstPacket or pinfo.number
    if #notUnderstood == 0 or pinfo.number ~= firstPacket then return end
    local others = #notUnderstood > 1 and string.format(", and %d more", #notUnderstood - 1) or ""
    pinfo.cols.info:append(string.format(" [preference not understood: %s%s]", notUnderstood[1], others))
end

function gqframe.dissector(tvb, pinfo, root)
    local isDatagram = pinfo.port_type == 3 -- UDP
    local direction = directionOf(pinfo)
    local bytes = tvb:raw()
    local canWait = not isDatagram and pinfo.can_desegment > 0
    local summaries = {}
    local offset = 0

    partOf[flowOf(pinfo)] = nil
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
            if direction == "reply" then noteFrame(pinfo, tvb, start, false) end
            waitForMore(pinfo, tvb, start, direction)
            pinfo.desegment_offset = start
            pinfo.desegment_len = left < headerSize and DESEGMENT_ONE_MORE_SEGMENT
                or math.min(size - left, DESEGMENT_ONE_MORE_SEGMENT)
            break
        elseif left < headerSize then
            addCutHeader(tvb:range(start, left), root)
            break
        else
            if direction == "reply" then noteFrame(pinfo, tvb, start, true) end
            summaries[#summaries + 1] = addFrame(tvb, start, length, pinfo, direction, isDatagram, root)
            offset = start + size
        end
    end
    if #summaries > 0 then pinfo.cols.info = table.concat(summaries, ", ") end
    addPreferenceFault(pinfo)
    return tvb:len()
end

function gqframe.init()
    latestRequest, requestOf, replyOf, isUnasked, unanswered = {}, {}, {}, {}, {}
    flows, isLost, partOf, endings, lastSeen, firstPacket = {}, {}, {}, {}, 0, nil
end

-- --- Registration ------------------------------------------------------------------------------------------------

register_postdissector(closing)

local tables = { DissectorTable.get("tcp.port"), DissectorTable.get("udp.port") }
local registeredPorts = ""

for _, ports in ipairs(tables) do ports:add_for_decode_as(gqframe) end

function gqframe.prefs_changed()
    notUnderstood = {}
    textEncoding = encodings[gqframe.prefs.encoding][2]
    chooseForms("request", gqframe.prefs.request_forms)
    chooseForms("reply", gqframe.prefs.reply_forms)
    readMap(gqframe.prefs.map)
    if gqframe.prefs.ports == registeredPorts then return end
    for _, ports in ipairs(tables) do
        if registeredPorts ~= "" then ports:remove(registeredPorts, gqframe) end
        if gqframe.prefs.ports ~= "" then ports:add(gqframe.prefs.ports, gqframe) end
    end
    registeredPorts = gqframe.prefs.ports
end
