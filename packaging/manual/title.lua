-- The first heading is the page's title; it stands above the contents and is not among them.
function Pandoc(document)
  document.meta.title = table.remove(document.blocks, 1).content
  return document
end
