-- Wireshark dissector for velard session captures (velard-host --capture).
--
--   tshark -X lua_script:tools/wireshark/velard.lua -2 -r session.pcapng -V
--
-- or copy velard.lua and velard_schema.lua into Wireshark's personal Lua
-- plugin folder. Interface 0 ("velard") holds the command socket's records,
-- interface 1 ("velar-stack") the stack's records as JSON.
--
-- Filters: velard.id, velard.token, velard.message == "Response",
-- velard.unanswered (requests without a response; needs two passes, which
-- Wireshark always makes and tshark makes with -2), velard.time (request to
-- response), velard.malformed, velarstack.type, velarstack.class, and one
-- field per schema field, named velard.<Message>.<field> with nested message
-- names joined by dots (velard.Request.RequestMakeCall.callType).

local script_dir = debug.getinfo(1, "S").source:match("^@(.*[/\\])") or "./"
local ok, schema = pcall(dofile, script_dir .. "velard_schema.lua")
if not ok or type(schema) ~= "table" or not schema.messages then
    error("velard.lua: velard_schema.lua must lie next to it (" .. tostring(schema) .. ")")
end

local PACKAGE = "imsCommonStruc."
local MAX_DEPTH = 32

local p_frame = Proto("velard", "velard command socket")
local p_stack = Proto("velarstack", "velar stack record")

local ids = schema.enums[PACKAGE .. "Id"] or {}

local f = {
    length = ProtoField.uint32("velard.length", "Length"),
    reserved = ProtoField.uint32("velard.reserved", "Reserved", base.HEX),
    type = ProtoField.uint32("velard.type", "Frame type", base.DEC,
                             { [1] = "Response", [2] = "Notify" }),
    token = ProtoField.uint32("velard.token", "Token"),
    message = ProtoField.string("velard.message", "Message"),
    id = ProtoField.uint32("velard.id", "Id", base.DEC, ids),
    request_in = ProtoField.framenum("velard.request_in", "Request in", base.NONE,
                                     frametype.REQUEST),
    response_in = ProtoField.framenum("velard.response_in", "Response in", base.NONE,
                                      frametype.RESPONSE),
    time = ProtoField.relative_time("velard.time", "Time since request"),
    unanswered = ProtoField.bool("velard.unanswered", "No response in this capture"),
    unknown = ProtoField.bytes("velard.unknown_field", "Unknown field"),
}
local fs = {
    type = ProtoField.string("velarstack.type", "Type"),
    token = ProtoField.uint32("velarstack.token", "Token"),
    class = ProtoField.string("velarstack.class", "Class"),
    id = ProtoField.int32("velarstack.id", "Record id", base.DEC, ids),
}
local e_malformed = ProtoExpert.new("velard.malformed", "Malformed",
                                    expert.group.MALFORMED, expert.severity.ERROR)
local es_malformed = ProtoExpert.new("velarstack.malformed", "Malformed record",
                                     expert.group.MALFORMED, expert.severity.ERROR)

-- One ProtoField per schema field, so every field shows and filters by name.
local makers = {
    int32 = ProtoField.int32, sint32 = ProtoField.int32, sfixed32 = ProtoField.int32,
    uint32 = ProtoField.uint32, fixed32 = ProtoField.uint32,
    int64 = ProtoField.int64, sint64 = ProtoField.int64, sfixed64 = ProtoField.int64,
    uint64 = ProtoField.uint64, fixed64 = ProtoField.uint64,
    bool = ProtoField.bool, float = ProtoField.float, double = ProtoField.double,
    string = ProtoField.string, bytes = ProtoField.bytes,
}
local fields = {}  -- full message name -> field number -> ProtoField
local frame_fields, stack_fields = {}, {}
for _, v in pairs(f) do frame_fields[#frame_fields + 1] = v end
for _, v in pairs(fs) do stack_fields[#stack_fields + 1] = v end
for msg, defs in pairs(schema.messages) do
    local short = msg:sub(#PACKAGE + 1)
    fields[msg] = {}
    for number, def in pairs(defs) do
        local name, kind, ref = def[1], def[2], def[3]
        local abbr = "velard." .. short .. "." .. name
        local pf
        if kind == "message" then
            pf = ProtoField.none(abbr, name)
        elseif kind == "enum" then
            pf = ProtoField.int32(abbr, name, base.DEC, schema.enums[ref])
        elseif kind == "bool" then
            pf = ProtoField.bool(abbr, name)
        elseif makers[kind] then
            pf = makers[kind](abbr, name)
        end
        if pf then
            fields[msg][number] = pf
            frame_fields[#frame_fields + 1] = pf
        end
    end
end
p_frame.fields = frame_fields
p_frame.experts = { e_malformed }
p_stack.fields = stack_fields
p_stack.experts = { es_malformed }

-- Protocol-buffer wire decoding. Positions are 0-based offsets into tvb;
-- s is the same bytes as a Lua string.

-- A varint as two 32-bit halves, and the position after it; nil if cut off
-- or longer than ten bytes.
local function varint(s, pos, stop)
    local lo, hi, shift = 0, 0, 0
    for at = pos, math.min(pos + 9, stop - 1) do
        local b = s:byte(at + 1)
        local v = b % 128
        if shift < 28 then
            lo = lo + v * 2 ^ shift
        elseif shift == 28 then
            lo = lo + (v % 16) * 2 ^ 28
            hi = hi + math.floor(v / 16)
        else
            hi = hi + v * 2 ^ (shift - 32)
        end
        shift = shift + 7
        if b < 128 then return lo, hi % 2 ^ 32, at + 1 end
    end
    return nil
end

local function signed32(lo) return lo >= 2 ^ 31 and lo - 2 ^ 32 or lo end

local function varint_value(kind, lo, hi)
    if kind == "uint32" then return lo
    elseif kind == "int32" or kind == "enum" then return signed32(lo)
    elseif kind == "sint32" then return lo % 2 == 0 and lo / 2 or -(lo + 1) / 2
    elseif kind == "bool" then return lo ~= 0 or hi ~= 0
    elseif kind == "uint64" then return UInt64.new(lo, hi)
    elseif kind == "int64" then return Int64.new(lo, hi)
    elseif kind == "sint64" then
        local r = UInt64.new(lo, hi):rshift(1)
        if lo % 2 == 1 then r = r:bnot() end
        return Int64.new(r:lower(), r:higher())
    end
end

local WIRE = { int32 = 0, sint32 = 0, uint32 = 0, int64 = 0, sint64 = 0, uint64 = 0,
               bool = 0, enum = 0, fixed64 = 1, sfixed64 = 1, double = 1,
               string = 2, bytes = 2, message = 2, fixed32 = 5, sfixed32 = 5, float = 5 }

-- What was wrong with the packet being dissected, for its Info column.
local problems = {}

local function malformed(item, pinfo, text)
    item:add_proto_expert_info(e_malformed, text)
    problems[#problems + 1] = text
    return false
end

-- Adds one scalar of a known field; false if its bytes do not make one.
local function add_scalar(tree, pf, kind, tvb, s, pos, stop, pinfo)
    local wt = WIRE[kind]
    if wt == 0 then
        local lo, hi, nxt = varint(s, pos, stop)
        if not lo then return nil end
        tree:add(pf, tvb(pos, nxt - pos), varint_value(kind, lo, hi))
        return nxt
    elseif wt == 1 or wt == 5 then
        local n = wt == 1 and 8 or 4
        if pos + n > stop then return nil end
        local r = tvb(pos, n)
        local v = ({ fixed64 = r.le_uint64, sfixed64 = r.le_int64, double = r.le_float,
                     fixed32 = r.le_uint, sfixed32 = r.le_int, float = r.le_float })[kind](r)
        tree:add(pf, r, v)
        return pos + n
    end
end

local decode_message

-- Decodes the fields of one message in [pos, stop) under tree. Returns
-- false once the bytes stop making sense (reported as malformed), and the
-- value of field 1 when it is a varint (the envelope's id).
decode_message = function(tvb, s, pos, stop, msg, tree, pinfo, depth)
    local defs = schema.messages[msg] or {}
    local pfs = fields[msg] or {}
    local first
    while pos < stop do
        local klo, khi, p = varint(s, pos, stop)
        if not klo then return malformed(tree, pinfo, "field key cut off"), first end
        local number = math.floor(klo / 8) + khi * 2 ^ 29
        local wt = klo % 8
        local def = defs[number]
        local vstart = p
        local vend
        if wt == 0 then
            local lo, _, nxt = varint(s, p, stop)
            if not lo then return malformed(tree, pinfo, "varint cut off"), first end
            if number == 1 then first = lo end
            vend = nxt
        elseif wt == 1 or wt == 5 then
            vend = p + (wt == 1 and 8 or 4)
        elseif wt == 2 then
            local len, lhi, nxt = varint(s, p, stop)
            if not len or lhi ~= 0 then return malformed(tree, pinfo, "length cut off"), first end
            vstart, vend = nxt, nxt + len
        else
            return malformed(tree, pinfo, "wire type " .. wt .. " in field " .. number), first
        end
        if vend > stop then
            return malformed(tree, pinfo, "field " .. number .. " runs past its message"), first
        end
        local kind = def and def[2]
        if not def or not pfs[number] then
            local item = tree:add(f.unknown, tvb(pos, vend - pos))
            item:set_text(string.format("Unknown field %d (wire type %d)", number, wt))
        elseif kind == "message" and wt == 2 then
            local sub = tree:add(pfs[number], tvb(pos, vend - pos))
            if depth >= MAX_DEPTH then return malformed(sub, pinfo, "nested too deep"), first end
            if not decode_message(tvb, s, vstart, vend, def[3], sub, pinfo, depth + 1) then
                return false, first
            end
        elseif kind == "string" and wt == 2 then
            tree:add(pfs[number], tvb(vstart, vend - vstart), s:sub(vstart + 1, vend))
        elseif kind == "bytes" and wt == 2 then
            tree:add(pfs[number], tvb(vstart, vend - vstart))
        elseif wt == 2 and def[4] and WIRE[kind] ~= 2 then
            -- A packed repeated scalar: a run of values under one key.
            local q = vstart
            while q < vend do
                q = add_scalar(tree, pfs[number], kind, tvb, s, q, vend, pinfo)
                if not q then return malformed(tree, pinfo, "packed field cut off"), first end
            end
        elseif WIRE[kind] == wt then
            add_scalar(tree, pfs[number], kind, tvb, s, vstart, vend, pinfo)
        else
            local item = tree:add(f.unknown, tvb(pos, vend - pos))
            return malformed(item, pinfo, string.format(
                "field %s has wire type %d, not that of a %s", def[1], wt, kind)), first
        end
        pos = vend
    end
    return true, first
end

-- Request/response pairing, filled on the first pass over the packets.
local pending, answer_of, request_of, when = {}, {}, {}, {}
function p_frame.init()
    pending, answer_of, request_of, when = {}, {}, {}, {}
end

local function usecs(pinfo) return math.floor(pinfo.abs_ts * 1e6 + 0.5) end

local direction_field = Field.new("frame.packet_flags_direction")

-- 1 for client to daemon, 2 for daemon to client: from the capture's
-- direction flag, or else from which length word fits.
local function direction(tvb)
    local d = direction_field()
    if d and (d.value == 1 or d.value == 2) then return d.value end
    if tvb:len() >= 4 then
        if tvb(0, 4):uint() == tvb:len() - 4 then return 1 end
        if tvb(0, 4):le_uint() == tvb:len() - 4 then return 2 end
    end
    return 1
end

local dissect_frame

function p_frame.dissector(tvb, pinfo, root)
    problems = {}
    dissect_frame(tvb, pinfo, root)
    if #problems > 0 then
        pinfo.cols.info:append(" [Malformed: " .. table.concat(problems, "; ") .. "]")
    end
end

dissect_frame = function(tvb, pinfo, root)
    pinfo.cols.protocol = "velard"
    local len = tvb:len()
    local tree = root:add(p_frame, tvb())
    local inbound = direction(tvb) == 1
    pinfo.cols.info = inbound and "client -> daemon" or "daemon -> client"
    if len < 12 then
        return malformed(tree, pinfo, "frame of " .. len .. " bytes is shorter than its header")
    end
    local length, token, kind
    if inbound then
        length = tvb(0, 4):uint()
        tree:add(f.length, tvb(0, 4))
        tree:add_le(f.reserved, tvb(4, 4))
        kind = "Request"
    else
        length = tvb(0, 4):le_uint()
        tree:add_le(f.length, tvb(0, 4))
        tree:add_le(f.type, tvb(4, 4))
        local t = tvb(4, 4):le_uint()
        kind = t == 1 and "Response" or t == 2 and "Notify" or nil
    end
    tree:add_le(f.token, tvb(8, 4))
    token = tvb(8, 4):le_uint()
    if not kind then return malformed(tree, pinfo, "unknown frame type") end
    tree:add(f.message, tvb(4, 0), kind):set_generated()
    local ok = true
    if length ~= len - 4 then
        ok = malformed(tree, pinfo, string.format(
            "length word says %d bytes follow, the frame has %d", length, len - 4))
    end

    local msg = PACKAGE .. kind
    local body = tree:add(tvb(12, len - 12), kind)
    local s = tvb:raw(0, len)
    local decoded, id = decode_message(tvb, s, 12, len, msg, body, pinfo, 0)
    if id then
        tree:add(f.id, tvb(12, 0), signed32(id)):set_generated()
    elseif decoded and ok then
        malformed(body, pinfo, "no id")
    end
    local name = id and (ids[id] or tostring(id)) or "?"
    pinfo.cols.info = string.format("%s %s token %d", kind, name, token)
    if kind == "Notify" then return end

    local n = pinfo.number
    if not pinfo.visited then
        when[n] = usecs(pinfo)
        if kind == "Request" then
            pending[token] = n
        elseif pending[token] then
            request_of[n], answer_of[pending[token]] = pending[token], n
            pending[token] = nil
        end
    end
    if kind == "Request" then
        if answer_of[n] then
            tree:add(f.response_in, tvb(8, 4), answer_of[n]):set_generated()
        elseif pinfo.visited then
            tree:add(f.unanswered, tvb(8, 4), true):set_generated()
            pinfo.cols.info:append(" [no response]")
        end
    elseif request_of[n] then
        local r = request_of[n]
        tree:add(f.request_in, tvb(8, 4), r):set_generated()
        local d = (when[n] or 0) - (when[r] or 0)
        local secs = math.floor(d / 1e6)
        tree:add(f.time, tvb(8, 4), NSTime.new(secs, (d - secs * 1e6) * 1000)):set_generated()
        pinfo.cols.info:append(string.format(" (%.3f ms)", d / 1000))
    end
end

-- Top-level members of the JSON object at s[pos] (1-based), as raw text;
-- nil if it is not a well-formed object. Enough JSON to find the members
-- that name a record; the JSON dissector shows the rest.
local function members(s, pos)
    local out = {}
    local i = s:find("%S", pos)
    if not i or s:sub(i, i) ~= "{" then return nil end
    i = i + 1
    local function skip_string(j)  -- j at the opening quote; returns after the closing one
        j = j + 1
        while j <= #s do
            local c = s:sub(j, j)
            if c == "\\" then j = j + 2
            elseif c == '"' then return j + 1
            else j = j + 1 end
        end
    end
    local function skip_value(j)
        j = s:find("%S", j)
        if not j then return nil end
        local c = s:sub(j, j)
        if c == '"' then return skip_string(j) end
        if c == "{" or c == "[" then
            local depth = 0
            while j and j <= #s do
                c = s:sub(j, j)
                if c == '"' then j = skip_string(j)
                else
                    if c == "{" or c == "[" then depth = depth + 1
                    elseif c == "}" or c == "]" then depth = depth - 1 end
                    j = j + 1
                    if depth == 0 then return j end
                end
            end
            return nil
        end
        return s:find("[,}%]%s]", j) or #s + 1
    end
    while true do
        i = s:find("%S", i)
        if not i then return nil end
        local c = s:sub(i, i)
        if c == "}" then return out end
        if c == "," then i = i + 1
        elseif c == '"' then
            local kend = skip_string(i)
            if not kend then return nil end
            local key = s:sub(i + 1, kend - 2)
            local colon = s:find("%S", kend)
            if not colon or s:sub(colon, colon) ~= ":" then return nil end
            local vstart = s:find("%S", colon + 1)
            local vend = vstart and skip_value(vstart)
            if not vend then return nil end
            out[key] = { vstart, s:sub(vstart, vend - 1) }
            i = vend
        else
            return nil
        end
    end
end

local json = Dissector.get("json")

function p_stack.dissector(tvb, pinfo, root)
    local tree = root:add(p_stack, tvb())
    local s = tvb:raw(0, tvb:len())
    local top = members(s, 1)
    local info = "stack record"
    if not top then
        tree:add_proto_expert_info(es_malformed, "not a JSON object")
        info = info .. " [Malformed]"
    else
        local function unquote(v) return v and v[2]:match('^"(.*)"$') end
        local t = unquote(top.type)
        if t then tree:add(fs.type, tvb(top.type[1] - 1, #top.type[2]), t) end
        info = t or info
        if top.token and tonumber(top.token[2]) then
            tree:add(fs.token, tvb(top.token[1] - 1, #top.token[2]), tonumber(top.token[2]))
            info = info .. " token " .. top.token[2]
        end
        local record = top.record and members(s, top.record[1])
        if record then
            local c = unquote(record.class)
            if c then tree:add(fs.class, tvb(record.class[1] - 1, #record.class[2]), c) end
            local id = record.id and tonumber(record.id[2])
            if id then tree:add(fs.id, tvb(record.id[1] - 1, #record.id[2]), id) end
            info = string.format("%s %s %s", info, c or "?", id and (ids[id] or id) or "?")
        elseif t ~= nil and top.record then
            tree:add_proto_expert_info(es_malformed, "record is not a JSON object")
        end
    end
    if json then json:call(tvb, pinfo, tree) end
    pinfo.cols.protocol = "velar-stack"
    pinfo.cols.info = info
end

local encaps = wtap_encaps or wtap
local wtap_table = DissectorTable.get("wtap_encap")
wtap_table:add(encaps.USER0, p_frame)
wtap_table:add(encaps.USER1, p_stack)
