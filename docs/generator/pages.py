#!/usr/bin/python3
"""Writes what MkDocs builds the site from.

    docs/generator/pages.py PICTUREHOST OUTPUT_DIR

The pages of docs/, a page for each family of the reference, and its pictures, which PICTUREHOST
makes from the examples now. Ends with an error where the reference and what the plug-in registers
differ, and where an example fails.
"""

import concurrent.futures
import pathlib
import re
import shutil
import sys

import jinja2
import PIL.Image
import yaml

import examples
import reference

DOCS = pathlib.Path(__file__).resolve().parent.parent
PAGES_FOR_USERS = ["index.md", "conventions.md"]
# What else people may call the plug-in from, where there is a page about it.
ELSEWHERE = ["command-line.md", "picture-files.md", "python.md", "embedding.md"]


def run_example(picturehost, pictures, entry):
    """Runs the example of an entry and notes what it printed and which pictures show it."""
    example = entry["example"]
    stem = entry["anchor"]
    result = None if example["only_values"] else pictures / f"{stem}.png"
    entry["printed"] = examples.run(picturehost, example, result)
    entry["typed"] = examples.typed(example)
    entry["python"] = examples.python(example)
    entry["figures"] = []
    first = "the picture" if example["only_values"] else "before"
    for file, caption in ((example["photo"], first), (example.get("other"), "second picture")):
        if file:
            entry["figures"].append(figure(pictures / pathlib.Path(file).name, caption))
    if result:
        entry["figures"].append(figure(result, "after" if example["photo"] else "result"))


def figure(file, caption):
    """A picture with its size, so that pages don't move while pictures load."""
    with PIL.Image.open(file) as picture:
        return {"file": file.name, "caption": caption, "width": picture.width, "height": picture.height}


def title_of(page):
    """The first heading of a Markdown file."""
    return re.search(r"^# (.+)$", page.read_text(), re.MULTILINE).group(1)


def copy_page(source, target):
    """Copies a page of docs/. What it links to outside docs/ isn't on the site and becomes a name."""
    text = source.read_text()
    text = re.sub(r"\[([^\]]+)\]\(\.\./([^)]+)\)", r"\1 (`\2`)", text)
    target.write_text(text)


def navigation(families):
    pages = {page.name: title_of(page) for page in sorted(DOCS.glob("*.md"))}
    elsewhere = [name for name in ELSEWHERE if name in pages]
    about = [name for name in pages if name not in PAGES_FOR_USERS + ELSEWHERE]
    return [
        {"Start": "index.md"},
        {"Reference": [
            {"All methods": "reference/index.md"},
            {"What holds for every method": "conventions.md"},
            *({family["title"]: f"reference/{family['file']}.md"} for family in families),
        ]},
        {"Coming from other tools": "other-tools.md"},
        {"Without the host": [{pages[name]: name} for name in elsewhere]},
        {"How it is made": [{pages[name]: name} for name in about]},
    ]


def write_reference(families, entries, pages, render):
    """A page for each family, the list of all entries, and the start page with a card for each family."""
    by_key = {entry["key"]: entry for entry in entries}
    for family in families:
        family["shown"] = by_key[family["picture"]]["figures"][-1]
        for entry in family["entries"]:
            entry["page"] = f"{family['file']}.md"
        (pages / "reference" / f"{family['file']}.md").write_text(render("family.md.j2", family=family))
    (pages / "reference" / "index.md").write_text(render("all.md.j2", entries=entries))
    start = pages / "index.md"
    start.write_text(start.read_text().replace("<!-- families -->", render("families.md.j2", families=families)))


def write_other_tools(entries, pages, render):
    places = {entry["name"]: f"reference/{entry['page']}#{entry['anchor']}" for entry in reversed(entries)}
    rows = yaml.safe_load((DOCS / "other-tools.yaml").read_text())["rows"]
    for row in rows:
        row["link"] = places[re.match(r"\w+", row["here"]).group()]
    (pages / "other-tools.md").write_text(render("other-tools.md.j2", rows=rows))


def main():
    picturehost, target = sys.argv[1], pathlib.Path(sys.argv[2]).resolve()
    shutil.rmtree(target, ignore_errors=True)
    pages = target / "pages"
    pictures = pages / "reference" / "pictures"
    pictures.mkdir(parents=True)

    try:
        families = reference.load(picturehost)
        entries = [entry for family in families for entry in family["entries"]]
        for entry in entries:
            for file in {entry["example"]["photo"], entry["example"].get("other")} - {None}:
                shutil.copy(examples.EXAMPLES / file, pictures)
        with concurrent.futures.ThreadPoolExecutor() as crew:
            list(crew.map(lambda entry: run_example(picturehost, pictures, entry), entries))
    except (reference.Mistake, examples.Failed) as problem:
        sys.exit(str(problem))

    for page in DOCS.glob("*.md"):
        copy_page(page, pages / page.name)
    for folder in ("pictures", "style"):
        shutil.copytree(DOCS / folder, pages / folder)

    environment = jinja2.Environment(
        loader=jinja2.FileSystemLoader(DOCS / "generator"),
        undefined=jinja2.StrictUndefined,
        trim_blocks=True,
        lstrip_blocks=True,
        keep_trailing_newline=True,
    )

    def render(template, **values):
        return environment.get_template(template).render(**values)

    write_reference(families, entries, pages, render)
    write_other_tools(entries, pages, render)
    settings = {
        "INHERIT": str(DOCS / "mkdocs.yml"),
        "docs_dir": str(pages),
        "site_dir": str(target / "site"),
        "nav": navigation(families),
    }
    (target / "mkdocs.yml").write_text(yaml.safe_dump(settings, sort_keys=False, allow_unicode=True))


main()
