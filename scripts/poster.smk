# Snakemake: an image in parts of about equal work, joined.
# usage: snakemake --snakefile poster.smk --cores N --config model=MODEL image=poster.png size=40000x20000 parts=12
#        [options="--view=front --edges"] [vorna=COMMAND]
import json, os, shlex, subprocess

command = config.get("vorna", "vorna")
image = config["image"]
plan = json.loads(subprocess.run(
    [command, "render", "--output=" + image, "--size=" + config["size"], "--plan=%d" % int(config["parts"]), "--threads=1",
     *shlex.split(config.get("options", "")), "--", config["model"]], check=True, stdout=subprocess.PIPE).stdout)
parts = {part["file"]: part for part in plan["parts"]}

rule assemble:
    input: list(parts)
    output: image
    params: words=shlex.join(plan["assemble"]["command"])
    shell: "{params.words}"

rule part:
    input: config["model"]
    output: temp(os.path.splitext(image)[0] + ".part-{number}.png")
    params: words=lambda wildcards, output: shlex.join(parts[output[0]]["command"])
    resources: mem_mb=lambda wildcards, attempt: max(part["memory"] for part in parts.values()) >> 20
    shell: "{params.words}"
