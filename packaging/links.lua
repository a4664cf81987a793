-- Turns the links between our Markdown files into links between the pages that are made of them. A
-- link to a file of the source tree that no package holds becomes plain text; one that leads nowhere
-- is an error. The variable "source" is the page's path from the root.

local page, packed

local function folder_of(path) return path:match("^(.*/)") or "" end

local function normal(path)
    local parts = {}
    for part in path:gmatch("[^/]+") do
        if part == ".." then table.remove(parts) elseif part ~= "." then table.insert(parts, part) end
    end
    return table.concat(parts, "/")
end

local function exists(path)
    local file = io.open(path, "r")
    if file then file:close() end
    return file ~= nil
end

local function is_packed(path)
    return path:match("^docs/") or path == "docs" or path:match("^examples") or
        path == "README.md" or path == "CHANGELOG.md"
end

function Meta(meta)
    page = pandoc.utils.stringify(meta.source)
end

local function Link(link)
    local path, anchor = link.target:match("^([^#]*)(.*)$")
    if path == "" or path:match("^%a+:") then return nil end
    local target = normal(folder_of(page) .. path)
    if not exists(target) then error(page .. ": no such file: " .. link.target) end
    if not is_packed(target) then return link.content end
    link.target = path:gsub("%.md$", ".html") .. anchor
    return link
end

return { { Meta = Meta }, { Link = Link } }
